#include "localdrive/store/FileRecord.h"

#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Text.h"

namespace quenby::localdrive {

bool FileRecord::isFolder() const { return mimeType == folderMimeType; }

const QString& FileRecord::select() {
    static const QString sql =
        QStringLiteral("SELECT f.seq, f.id, f.title, f.mime_type, f.original_filename, f.description, f.folder_color, "
                       "f.created, f.modified, f.modified_by, f.modified_by_me, f.viewed, f.shared_with_me, f.trashed, "
                       "f.explicitly_trashed, f.starred, f.hidden, f.restricted, f.writers_can_share, "
                       "f.head_revision, f.quota_used, f.version, f.made_with, b.id, b.size, b.md5 "
                       "FROM files f LEFT JOIN revisions r ON r.id = f.head_revision "
                       "LEFT JOIN blobs b ON b.id = r.blob_id ");
    return sql;
}

FileRecord FileRecord::fromRow(const Row& row) {
    FileRecord file;
    int column = 0;
    const auto next = [&row, &column]() -> const QVariant& { return row[column++]; };
    file.seq = next().toLongLong();
    file.id = next().toString();
    file.title = next().toString();
    file.mimeType = next().toString();
    file.originalFilename = next().toString();
    file.description = next().toString();
    file.folderColor = next().toString();
    file.created = next().toLongLong();
    file.modified = next().toLongLong();
    file.modifiedBy = next().toString();
    file.modifiedByMe = next();
    file.viewed = next();
    file.sharedWithMe = next();
    file.trashed = next().toBool();
    file.explicitlyTrashed = next().toBool();
    file.starred = next().toBool();
    file.hidden = next().toBool();
    file.restricted = next().toBool();
    file.writersCanShare = next().toBool();
    file.headRevision = next().toString();
    file.quotaUsed = next().toLongLong();
    file.version = next().toLongLong();
    file.madeWith = next().toString();
    file.blobId = next().toString();
    file.size = next().toLongLong();
    file.md5 = next().toString();
    return file;
}

std::optional<FileRecord> FileRecord::find(Session& session, const QString& id) {
    static const QString sql = select() + QStringLiteral("WHERE f.id = ?");
    const Row row = session.row(sql, {id});
    return row.isEmpty() ? std::nullopt : std::optional(fromRow(row));
}

QVariantList FileRecord::writtenValues() const {
    return {title,    searchKey(title), mimeType,     originalFilename, description,  folderColor, created,
            modified, modifiedBy,       modifiedByMe, viewed,           sharedWithMe, trashed,     explicitlyTrashed,
            starred,  hidden,           restricted,   writersCanShare,  headRevision, quotaUsed,   madeWith,
            id};
}

void FileRecord::insert(Session& session) {
    session.run(QStringLiteral("INSERT INTO files(title, title_key, mime_type, original_filename, description, "
                               "folder_color, created, modified, modified_by, modified_by_me, viewed, shared_with_me, "
                               "trashed, explicitly_trashed, starred, hidden, restricted, writers_can_share, "
                               "head_revision, quota_used, made_with, id) "
                               "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                writtenValues());
    seq = session.value(QStringLiteral("SELECT last_insert_rowid()")).toLongLong();
}

void FileRecord::update(Session& session) const {
    session.run(QStringLiteral("UPDATE files SET title = ?, title_key = ?, mime_type = ?, original_filename = ?, "
                               "description = ?, folder_color = ?, created = ?, modified = ?, modified_by = ?, "
                               "modified_by_me = ?, viewed = ?, shared_with_me = ?, trashed = ?, "
                               "explicitly_trashed = ?, starred = ?, hidden = ?, restricted = ?, "
                               "writers_can_share = ?, head_revision = ?, quota_used = ?, made_with = ? WHERE id = ?"),
                writtenValues());
}

} // namespace quenby::localdrive
