#include "localdrive/store/Documents.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/NativeTypes.h"

#include <QJsonDocument>

namespace quenby::localdrive::documents {
namespace {

Result<Document> find(Work& work, const QString& fileId, Role needed) {
    const Result<FileRecord> file = findFile(work, fileId, needed);
    if (!file)
        return file.error();
    if (!nativeKind(file->mimeType))
        return apiError::invalid(QStringLiteral("fileId"), QStringLiteral("This file is not a document of the Drive."));
    Document document{*file, roleOf(work, file->id), 0, {}};
    const Row row =
        work.session().row(QStringLiteral("SELECT revision, content FROM documents WHERE file_id = ?"), {file->id});
    if (!row.isEmpty()) {
        document.revision = row[0].toLongLong();
        document.content = QJsonDocument::fromJson(row[1].toString().toUtf8()).object();
    }
    return document;
}

} // namespace

Result<Document> read(DriveStore& store, const Caller& caller, const QString& fileId) {
    Work work(store, caller, Session::Kind::read);
    Result<Document> document = find(work, fileId, Role::reader);
    // A failed database explains a strange result, not the other way round.
    if (const MaybeError& failure = work.session().failure())
        return *failure;
    return document;
}

Result<qint64> write(DriveStore& store, const Caller& caller, const QString& fileId, const QJsonObject& content,
                     qint64 baseRevision) {
    Work work(store, caller, Session::Kind::write);
    Result<Document> document = find(work, fileId, Role::writer);
    if (!document)
        return work.session().failure().value_or(document.error());
    if (document->revision != baseRevision)
        return apiError::conditionNotMet(QStringLiteral("Somebody has changed this document meanwhile."));
    const qint64 revision = baseRevision + 1;
    const QByteArray text = QJsonDocument(content).toJson(QJsonDocument::Compact);
    work.session().run(QStringLiteral("INSERT OR REPLACE INTO documents VALUES(?, ?, ?)"),
                       {document->file.id, revision, QString::fromUtf8(text)});
    FileRecord& file = document->file;
    file.modified = work.now();
    file.modifiedBy = caller.user.emailAddress;
    file.modifiedByMe = work.now();
    file.update(work.session());
    recordChange(work, file.id);
    if (const Result<void> committed = work.commit(); !committed)
        return committed.error();
    return revision;
}

void copy(Work& work, const QString& originalId, const QString& copyId) {
    work.session().run(
        QStringLiteral("INSERT INTO documents SELECT ?, revision, content FROM documents WHERE file_id = ?"),
        {copyId, originalId});
}

} // namespace quenby::localdrive::documents
