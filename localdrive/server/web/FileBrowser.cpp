#include "localdrive/server/web/FileBrowser.h"

#include "localdrive/store/FileTree.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Permissions.h"
#include "localdrive/store/Text.h"

#include <QRegularExpression>

#include <algorithm>

namespace quenby::localdrive {
namespace {

// More words would not find less.
constexpr qsizetype mostWords = 20;
// Deeper folders are shown without those above.
constexpr int longestWay = 64;

const QString isOwn =
    QStringLiteral("EXISTS(SELECT 1 FROM permissions o WHERE o.file_id = f.id AND o.id = ? AND o.role = ?)");

struct Condition {
    QString sql;
    QVariantList values;
};

Condition conditionOf(const ListRequest& request, Work& work) {
    const QString me = work.caller().user.permissionId();
    switch (request.place) {
    case Place::folder:
        return {QStringLiteral("f.trashed <= ? AND f.explicitly_trashed = 0 AND "
                               "f.id IN (SELECT file_id FROM parents WHERE parent_id = ?)"),
                {request.isInTrash, request.folderId}};
    case Place::recent:
        return {QStringLiteral("f.trashed = 0 AND f.mime_type <> ?"), {folderMimeType}};
    case Place::shared:
        return {QStringLiteral("f.trashed = 0 AND NOT ") + isOwn, {me, static_cast<int>(Role::owner)}};
    case Place::trash:
        return {QStringLiteral("f.explicitly_trashed = 1 AND ") + isOwn, {me, static_cast<int>(Role::owner)}};
    case Place::search:
        break;
    }
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    Condition condition{QStringLiteral("f.trashed = 0"), {}};
    for (const QString& word : request.text.split(blanks, Qt::SkipEmptyParts).mid(0, mostWords)) {
        condition.sql += QStringLiteral(" AND instr(f.title_key, ?) > 0");
        condition.values += searchKey(word);
    }
    return condition;
}

QString sqlOf(const SortOrder& order) {
    const QString way = order.descending ? QStringLiteral(" DESC") : QString();
    const QString folders = QStringLiteral("f.mime_type = '%1' DESC, ").arg(folderMimeType);
    switch (order.by) {
    case SortOrder::By::modified:
        return folders + QStringLiteral("f.modified") + way + QStringLiteral(", f.seq") + way;
    case SortOrder::By::size:
        return folders + QStringLiteral("IFNULL(b.size, -1)") + way + QStringLiteral(", f.title_key, f.seq");
    case SortOrder::By::name:
        break;
    }
    return folders + QStringLiteral("f.title_key") + way + QStringLiteral(", f.seq") + way;
}

} // namespace

SortOrder SortOrder::parse(const QString& text) {
    const bool descending = text.startsWith(QLatin1Char('-'));
    const QString name = descending ? text.mid(1) : text;
    if (name == QLatin1String("modified"))
        return {By::modified, descending};
    if (name == QLatin1String("size"))
        return {By::size, descending};
    return {By::name, descending && name == QLatin1String("name")};
}

QString SortOrder::toText() const {
    const QString name = by == By::modified ? QStringLiteral("modified")
                         : by == By::size   ? QStringLiteral("size")
                                            : QStringLiteral("name");
    return descending ? QLatin1Char('-') + name : name;
}

QList<FileRecord> FileBrowser::select(const QString& condition, const QVariantList& values, const QString& order,
                                      qint64 limit, qint64 from) {
    const QString sql = FileRecord::select() +
                        QStringLiteral("WHERE f.id <> ? AND EXISTS(SELECT 1 FROM permissions p WHERE "
                                       "p.file_id = f.id AND p.id = ?) AND ") +
                        condition + QStringLiteral(" ORDER BY ") + order + QStringLiteral(" LIMIT ? OFFSET ?");
    QVariantList all{work_.store().rootFolderId(), work_.caller().user.permissionId()};
    all += values;
    all += limit;
    all += from;
    QList<FileRecord> records;
    for (const Row& row : work_.session().rows(sql, all))
        records.append(FileRecord::fromRow(row));
    return records;
}

FileList FileBrowser::list(const ListRequest& request) {
    const Condition condition = conditionOf(request, work_);
    const QString order =
        request.place == Place::recent ? QStringLiteral("f.modified DESC, f.seq DESC") : sqlOf(request.order);
    // One more tells whether there is a next page.
    QList<FileRecord> records = select(condition.sql, condition.values, order, request.count + 1, request.from);
    FileList found;
    found.hasMore = records.size() > request.count;
    records.resize(std::min<qsizetype>(records.size(), request.count));
    for (const FileRecord& record : std::as_const(records))
        found.files.append(listed(record));
    return found;
}

ListedFile FileBrowser::listed(const FileRecord& record) {
    const QString me = work_.caller().user.permissionId();
    const QList<Permission> permissions = permissionsOf(work_.session(), record.id);
    ListedFile file{record, roleOf(work_, record.id), permissions.size() > 1, {}};
    for (const Permission& permission : permissions)
        if (permission.role == Role::owner && permission.id != me)
            file.owner = work_.user(permission.value)[QLatin1String("displayName")].toString();
    return file;
}

QList<NamedFolder> FileBrowser::way(const QString& folderId) {
    QList<NamedFolder> folders;
    QString id = folderId;
    while (!id.isEmpty() && folders.size() < longestWay) {
        if (id == work_.store().rootFolderId()) {
            folders.prepend({id, QStringLiteral("My Drive")});
            break;
        }
        const Result<FileRecord> folder = findFile(work_, id);
        if (!folder)
            break;
        folders.prepend({folder->id, folder->title});
        id = FileTree(work_).parents(folder->id).value(0);
    }
    return folders;
}

QList<FileRecord> FileBrowser::largest(int count) {
    return select(QStringLiteral("f.quota_used > 0 AND ") + isOwn,
                  {work_.caller().user.permissionId(), static_cast<int>(Role::owner)},
                  QStringLiteral("f.quota_used DESC, f.seq"), count, 0);
}

} // namespace quenby::localdrive
