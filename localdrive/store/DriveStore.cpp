#include "localdrive/store/DriveStore.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Permissions.h"
#include "localdrive/store/Schema.h"
#include "localdrive/store/Work.h"

namespace quenby::localdrive {

DriveStore::DriveStore(StoreSettings settings, std::unique_ptr<FolderLock> lock, std::unique_ptr<Database> database,
                       std::unique_ptr<BlobStore> blobs)
    : settings_(std::move(settings))
    , lock_(std::move(lock))
    , database_(std::move(database))
    , blobs_(std::move(blobs)) {}

Result<std::unique_ptr<DriveStore>> DriveStore::open(StoreSettings settings) {
    Result<std::unique_ptr<Database>> database = Database::open(settings.folder);
    if (!database)
        return database.error();
    Result<std::unique_ptr<FolderLock>> lock = FolderLock::take(settings.folder);
    if (!lock)
        return lock.error();
    Result<std::unique_ptr<BlobStore>> blobs = BlobStore::open(settings.folder);
    if (!blobs)
        return blobs.error();
    std::unique_ptr<DriveStore> store(
        new DriveStore(std::move(settings), *std::move(lock), *std::move(database), *std::move(blobs)));
    if (const Result<void> prepared = store->prepare(); !prepared)
        return prepared.error();
    if (const Result<void> swept = store->sweepBlobs(); !swept)
        return swept.error();
    return store;
}

// Makes the tables, and in a new Drive the root folder and the key.
Result<void> DriveStore::prepare() {
    if (const Result<void> migrated = database_->migrate(QStringLiteral("drive"), driveSchema()); !migrated)
        return migrated;
    const Caller founder{settings_.account, QUrl(), QDateTime::currentDateTimeUtc()};
    Work work(*this, founder, Session::Kind::write);
    Session& session = work.session();
    const QString readMeta = QStringLiteral("SELECT value FROM meta WHERE name = ?");
    rootFolderId_ = session.value(readMeta, {QStringLiteral("rootFolderId")}).toString();
    pageTokenKey_ = session.value(readMeta, {QStringLiteral("pageTokenKey")}).toByteArray();
    if (!rootFolderId_.isEmpty())
        return work.commit();

    FileRecord root;
    root.id = newRootFolderId();
    root.title = QStringLiteral("My Drive");
    root.mimeType = folderMimeType;
    root.created = root.modified = work.now();
    root.modifiedBy = settings_.account.emailAddress;
    root.insert(session);
    insertOwner(work, root.id);
    // Making the Drive counts as the first change, so that 0 always means "from the beginning".
    session.run(QStringLiteral("INSERT INTO sqlite_sequence(name, seq) VALUES('changes', 1)"));
    rootFolderId_ = root.id;
    pageTokenKey_ = newKey();
    const QString writeMeta = QStringLiteral("INSERT INTO meta VALUES(?, ?)");
    session.run(writeMeta, {QStringLiteral("rootFolderId"), rootFolderId_});
    session.run(writeMeta, {QStringLiteral("pageTokenKey"), pageTokenKey_});
    return work.commit();
}

Result<void> DriveStore::sweepBlobs() {
    Session session(*database_, Session::Kind::read);
    QSet<QString> known;
    for (const Row& row : session.rows(QStringLiteral("SELECT id FROM blobs")))
        known.insert(row[0].toString());
    // Only when the list is whole: sweeping by half a list would destroy contents.
    const Result<void> read = session.commit();
    if (read)
        blobs_->sweep(known);
    return read;
}

Result<FileContent> DriveStore::findContent(const Caller& caller, const QString& fileId, const QString& revisionId) {
    Work work(*this, caller, Session::Kind::read);
    const Result<FileRecord> file = findFile(work, fileId);
    if (work.session().failure())
        return *work.session().failure();
    if (!file)
        return file.error();
    if (!file->hasContent())
        return apiError::notDownloadable();
    const Row row =
        work.session().row(QStringLiteral("SELECT b.id, b.size, b.md5, r.mime_type, r.modified FROM revisions r "
                                          "JOIN blobs b ON b.id = r.blob_id WHERE r.file_id = ? AND r.id = ?"),
                           {file->id, revisionId.isEmpty() ? file->headRevision : revisionId});
    if (row.isEmpty())
        return apiError::notFound(QStringLiteral("Revision"), revisionId);

    FileContent content;
    content.path = blobs_->path(row[0].toString());
    content.file = std::make_unique<QFile>(content.path);
    content.size = row[1].toLongLong();
    content.md5 = row[2].toString();
    content.title = file->title;
    content.mimeType = revisionId.isEmpty() ? file->mimeType : row[3].toString();
    content.modified = QDateTime::fromMSecsSinceEpoch(row[4].toLongLong(), Qt::UTC);
    return content;
}

Result<FileContent> DriveStore::content(const Caller& caller, const QString& fileId, const QString& revisionId) {
    // The content may be replaced or deleted between the look and the opening; a second look then knows what is true.
    for (int look = 0; look < 2; ++look) {
        Result<FileContent> content = findContent(caller, fileId, revisionId);
        if (!content || content->file->open(QIODevice::ReadOnly))
            return content;
    }
    return apiError::internal(QStringLiteral("The content of file %1 can't be read.").arg(fileId));
}

} // namespace quenby::localdrive
