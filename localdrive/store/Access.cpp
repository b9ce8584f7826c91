#include "localdrive/store/Access.h"

#include "localdrive/store/ApiError.h"

namespace quenby::localdrive {

QString permissionId(const QString& type, const QString& value, bool withLink) {
    if (type == QLatin1String("anyone"))
        return withLink ? QStringLiteral("anyoneWithLink") : QStringLiteral("anyone");
    // A domain's number is made like a person's; an address without "@" is nobody's.
    return Account{{}, value}.permissionId();
}

Role roleOf(Work& work, const QString& fileId) {
    const Account& user = work.caller().user;
    const QString domain = user.emailAddress.section(QLatin1Char('@'), 1);
    return static_cast<Role>(
        work.session()
            .value(QStringLiteral("SELECT MAX(role) FROM permissions WHERE file_id = ? AND id IN (?, ?, ?, ?)"),
                   {fileId, user.permissionId(), permissionId(QStringLiteral("domain"), domain, false),
                    QStringLiteral("anyone"), QStringLiteral("anyoneWithLink")})
            .toInt());
}

QString resolvedId(Work& work, const QString& id) {
    return id == QLatin1String("root") ? work.store().rootFolderId() : id;
}

bool isShownTo(Work& work, const FileRecord& file) {
    const CallingProgram& program = work.caller().program;
    return !program.seesOwnFilesOnly || file.madeWith == program.clientId || file.id == work.store().rootFolderId();
}

Result<FileRecord> findFile(Work& work, const QString& id, Role needed) {
    std::optional<FileRecord> file = FileRecord::find(work.session(), resolvedId(work, id));
    const Role role = file && isShownTo(work, *file) ? roleOf(work, file->id) : Role::none;
    if (role == Role::none)
        return apiError::notFound(QStringLiteral("File"), id);
    if (role < needed)
        return apiError::forbidden(
            QStringLiteral("The user does not have sufficient permissions for file %1.").arg(id));
    return *std::move(file);
}

} // namespace quenby::localdrive
