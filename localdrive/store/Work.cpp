#include "localdrive/store/Work.h"

#include "localdrive/store/Identifiers.h"

namespace quenby::localdrive {

Work::Work(DriveStore& store, const Caller& caller, Session::Kind kind)
    : store_(store)
    , caller_(caller)
    , session_(store.database(), kind) {
    if (kind == Session::Kind::write)
        session_.run(
            QStringLiteral("INSERT INTO users VALUES(?, ?) "
                           "ON CONFLICT(email) DO UPDATE SET name = excluded.name WHERE name <> excluded.name"),
            {caller.user.emailAddress, caller.user.displayName});
}

Work::~Work() {
    // Should the rollback not have happened yet, no other session can see the rows that name these.
    for (const QString& id : std::as_const(adopted_))
        store_.blobs().remove(id);
}

Result<QString> Work::adopt(const StagedBlob& staged) {
    Result<QString> id = store_.blobs().adopt(staged);
    if (!id)
        return id;
    adopted_.append(*id);
    parts_.append(staged);
    session_.run(QStringLiteral("INSERT INTO blobs VALUES(?, ?, ?)"), {*id, staged.size, staged.md5});
    return id;
}

Result<QString> Work::adoptEmpty() {
    const QString name = newItemId();
    const Result<std::unique_ptr<IncomingBlob>> part = store_.blobs().incoming(name);
    if (!part)
        return part.error();
    const Result<StagedBlob> staged = part.value()->finish();
    const Result<QString> id = staged ? adopt(*staged) : Result<QString>(staged.error());
    store_.blobs().discardIncoming(name);
    return id;
}

void Work::release(const QString& blobId) {
    const qint64 deleted = session_.run(QStringLiteral("DELETE FROM blobs WHERE id = ? AND NOT EXISTS "
                                                       "(SELECT 1 FROM revisions WHERE blob_id = blobs.id)"),
                                        {blobId});
    if (deleted > 0)
        released_.append(blobId);
}

QJsonObject Work::user(const QString& emailAddress) {
    auto name = names_.constFind(emailAddress);
    if (name == names_.constEnd()) {
        const QVariant known = session_.value(QStringLiteral("SELECT name FROM users WHERE email = ?"), {emailAddress});
        name = names_.insert(emailAddress, known.isValid() ? known.toString() : emailAddress);
    }
    const Account account{*name, emailAddress};
    return {{QStringLiteral("kind"), QStringLiteral("drive#user")},
            {QStringLiteral("displayName"), account.displayName},
            {QStringLiteral("emailAddress"), account.emailAddress},
            {QStringLiteral("permissionId"), account.permissionId()},
            {QStringLiteral("isAuthenticatedUser"), account.permissionId() == caller_.user.permissionId()}};
}

Result<void> Work::commit() {
    // Whether a COMMIT that fails has happened is known at the next start only, which sweeps what no row names.
    if (!session_.failure())
        adopted_.clear();
    const Result<void> committed = session_.commit();
    if (!committed)
        return committed;
    for (const StagedBlob& part : std::as_const(parts_))
        store_.blobs().discard(part);
    for (const QString& id : std::as_const(released_))
        store_.blobs().remove(id);
    parts_.clear();
    released_.clear();
    return committed;
}

} // namespace quenby::localdrive
