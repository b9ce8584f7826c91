#include "localdrive/store/Revisions.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/FileResource.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

constexpr int unpinnedKept = 100;

struct Revision {
    QString id;
    QString blobId;
    QString mimeType;
    QString originalFilename;
    qint64 modified = 0;
    QString modifiedBy;
    bool pinned = false;
    bool published = false;
    bool publishAuto = false;
    bool publishedOutside = false;
    qint64 size = 0;
    QString md5;
};

const QString& selectRevisions() {
    static const QString sql = QStringLiteral(
        "SELECT r.id, r.blob_id, r.mime_type, r.original_filename, r.modified, r.modified_by, r.pinned, r.published, "
        "r.publish_auto, r.published_outside, b.size, b.md5 "
        "FROM revisions r LEFT JOIN blobs b ON b.id = r.blob_id WHERE r.file_id = ? ");
    return sql;
}

Revision fromRow(const Row& row) {
    return {row[0].toString(),   row[1].toString(), row[2].toString(),    row[3].toString(),
            row[4].toLongLong(), row[5].toString(), row[6].toBool(),      row[7].toBool(),
            row[8].toBool(),     row[9].toBool(),   row[10].toLongLong(), row[11].toString()};
}

QJsonObject revisionResource(Work& work, const FileRecord& file, const Revision& revision) {
    const QUrl& base = work.caller().base;
    const QByteArray state = revision.id.toLatin1() + (revision.pinned ? "p" : "-") + (revision.published ? "p" : "-") +
                             (revision.publishAuto ? "a" : "-") + (revision.publishedOutside ? "o" : "-");
    const QJsonObject modifier = work.user(revision.modifiedBy);
    QJsonObject resource{{QStringLiteral("kind"), QStringLiteral("drive#revision")},
                         {QStringLiteral("etag"), entityTag(state)},
                         {QStringLiteral("id"), revision.id},
                         {QStringLiteral("selfLink"), links::api(base, {QStringLiteral("files"), file.id,
                                                                        QStringLiteral("revisions"), revision.id})},
                         {QStringLiteral("mimeType"), revision.mimeType},
                         {QStringLiteral("modifiedDate"), dateText(QVariant(revision.modified))},
                         {QStringLiteral("pinned"), revision.pinned},
                         {QStringLiteral("published"), revision.published},
                         {QStringLiteral("publishAuto"), revision.publishAuto},
                         {QStringLiteral("publishedOutsideDomain"), revision.publishedOutside},
                         {QStringLiteral("lastModifyingUser"), modifier},
                         {QStringLiteral("lastModifyingUserName"), modifier.value(QLatin1String("displayName"))}};
    if (revision.blobId.isEmpty()) {
        resource.insert(QStringLiteral("exportLinks"), exportLinks(base, file.mimeType, file.id));
    } else {
        resource.insert(QStringLiteral("downloadUrl"), links::download(base, file.id, revision.id));
        resource.insert(QStringLiteral("originalFilename"), revision.originalFilename);
        resource.insert(QStringLiteral("fileSize"), int64(revision.size));
        resource.insert(QStringLiteral("md5Checksum"), revision.md5);
    }
    return resource;
}

Result<Revision> findRevision(Work& work, const FileRecord& file, const QString& id) {
    const Row row = work.session().row(selectRevisions() + QStringLiteral("AND r.id = ?"),
                                       {file.id, id == QLatin1String("head") ? file.headRevision : id});
    if (row.isEmpty())
        return apiError::notFound(QStringLiteral("Revision"), id);
    return fromRow(row);
}

void removeRevision(Work& work, const Revision& revision) {
    work.session().run(QStringLiteral("DELETE FROM revisions WHERE id = ?"), {revision.id});
    if (!revision.blobId.isEmpty())
        work.release(revision.blobId);
}

void removeSurplus(Work& work, const FileRecord& file) {
    const QList<Row> rows = work.session().rows(
        selectRevisions() + QStringLiteral("AND NOT r.pinned ORDER BY r.seq DESC LIMIT -1 OFFSET ?"),
        {file.id, unpinnedKept});
    for (const Row& row : rows)
        removeRevision(work, fromRow(row));
}

// What the file's revisions say about it: its head, that one's content, and what the quota counts.
void refreshFromRevisions(Work& work, FileRecord& file) {
    const Row head = work.session().row(selectRevisions() + QStringLiteral("ORDER BY r.seq DESC LIMIT 1"), {file.id});
    const Revision revision = head.isEmpty() ? Revision() : fromRow(head);
    file.headRevision = revision.id;
    file.blobId = revision.blobId;
    file.size = revision.size;
    file.md5 = revision.md5;
    file.quotaUsed = work.session()
                         .value(QStringLiteral("SELECT TOTAL(b.size) FROM revisions r JOIN blobs b ON b.id = r.blob_id "
                                               "WHERE r.file_id = ? AND (r.pinned OR r.id = ?)"),
                                {file.id, file.headRevision})
                         .toLongLong();
}

} // namespace

void appendRevision(Work& work, FileRecord& file, const QString& blobId, bool pinned, bool replaceHead) {
    if (replaceHead && !file.headRevision.isEmpty())
        if (const Result<Revision> head = findRevision(work, file, file.headRevision))
            removeRevision(work, head.value());
    work.session().run(
        QStringLiteral("INSERT INTO revisions(id, file_id, blob_id, mime_type, original_filename, modified, "
                       "modified_by, pinned) VALUES(?, ?, ?, ?, ?, ?, ?, ?)"),
        {newItemId(), file.id, blobId.isEmpty() ? QVariant() : QVariant(blobId), file.mimeType, file.originalFilename,
         work.now(), work.caller().user.emailAddress, pinned});
    removeSurplus(work, file);
    refreshFromRevisions(work, file);
}

namespace revisions {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    QJsonArray items;
    for (const Row& row : work.session().rows(selectRevisions() + QStringLiteral("ORDER BY r.seq"), {file->id}))
        items.append(revisionResource(work, file.value(), fromRow(row)));
    const QString selfLink =
        links::api(work.caller().base, {QStringLiteral("files"), file->id, QStringLiteral("revisions")});
    return unpagedList(QStringLiteral("drive#revisionList"), selfLink, items);
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const Result<Revision> revision = findRevision(work, file.value(), params.text("revisionId"));
    if (!revision)
        return revision.error();
    return revisionResource(work, file.value(), revision.value());
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    Result<FileRecord> file = findFile(work, params.text("fileId"), Role::writer);
    if (!file)
        return file.error();
    Result<Revision> revision = findRevision(work, file.value(), params.text("revisionId"));
    if (!revision)
        return revision.error();
    const QJsonObject resource = params.resource();
    revision->pinned = resource.value(QLatin1String("pinned")).toBool(revision->pinned);
    revision->published = resource.value(QLatin1String("published")).toBool(revision->published);
    revision->publishAuto = resource.value(QLatin1String("publishAuto")).toBool(revision->publishAuto);
    revision->publishedOutside =
        resource.value(QLatin1String("publishedOutsideDomain")).toBool(revision->publishedOutside);
    work.session().run(
        QStringLiteral("UPDATE revisions SET pinned = ?, published = ?, publish_auto = ?, "
                       "published_outside = ? WHERE id = ?"),
        {revision->pinned, revision->published, revision->publishAuto, revision->publishedOutside, revision->id});
    refreshFromRevisions(work, *file);
    file->update(work.session());
    recordChange(work, file->id);
    return revisionResource(work, file.value(), revision.value());
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    Result<FileRecord> file = findFile(work, params.text("fileId"), Role::writer);
    if (!file)
        return file.error();
    const Result<Revision> revision = findRevision(work, file.value(), params.text("revisionId"));
    if (!revision)
        return revision.error();
    const qint64 count = work.session()
                             .value(QStringLiteral("SELECT COUNT(*) FROM revisions WHERE file_id = ?"), {file->id})
                             .toLongLong();
    if (count == 1)
        return apiError::invalid(QStringLiteral("revisionId"),
                                 QStringLiteral("A file's only revision can't be deleted: delete the file instead."));
    removeRevision(work, revision.value());
    refreshFromRevisions(work, *file);
    file->update(work.session());
    recordChange(work, file->id);
    return QJsonObject();
}

} // namespace revisions
} // namespace quenby::localdrive
