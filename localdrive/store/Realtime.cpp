#include "localdrive/store/Realtime.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"

#include <QFile>
#include <QJsonDocument>

namespace quenby::localdrive::realtime {
namespace {

constexpr qint64 largestDocument = 10 * 1024 * 1024;

struct Document {
    qint64 revision = 0;
    QJsonObject data;
};

Document read(Work& work, const QString& fileId) {
    const Row row =
        work.session().row(QStringLiteral("SELECT revision, document FROM realtime WHERE file_id = ?"), {fileId});
    if (row.isEmpty())
        return {};
    return {row[0].toLongLong(), QJsonDocument::fromJson(row[1].toString().toUtf8()).object()};
}

Result<QJsonObject> given(const StagedBlob& media) {
    if (media.size > largestDocument)
        return apiError::invalid(QStringLiteral("media"), QStringLiteral("A shared document is at most 10 MiB long."));
    QFile file(media.path);
    if (!file.open(QIODevice::ReadOnly))
        return apiError::internal(QStringLiteral("The document that arrived can't be read."));
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return apiError::invalid(QStringLiteral("media"), QStringLiteral("A shared document must be a JSON object."));
    return document.object();
}

} // namespace

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const Document document = read(work, file->id);
    if (const std::optional<qint64> wanted = params.number("revision"); wanted && *wanted != document.revision)
        return apiError::notFound(QStringLiteral("Revision"), QString::number(*wanted));
    return QJsonObject{{QStringLiteral("appId"), QStringLiteral("localdrive-pages")},
                       {QStringLiteral("revision"), document.revision},
                       {QStringLiteral("data"), document.data}};
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"), Role::writer);
    if (!file)
        return file.error();
    if (!params.media())
        return apiError::required(QStringLiteral("media"));
    const Result<QJsonObject> data = given(*params.media());
    if (!data)
        return data.error();
    const Document present = read(work, file->id);
    const QString base = params.text("baseRevision");
    if (!base.isEmpty() && base != QString::number(present.revision))
        return apiError::conditionNotMet(QStringLiteral("The document is at revision %1.").arg(present.revision));
    const QByteArray text = QJsonDocument(data.value()).toJson(QJsonDocument::Compact);
    work.session().run(QStringLiteral("INSERT OR REPLACE INTO realtime VALUES(?, ?, ?)"),
                       {file->id, present.revision + 1, QString::fromUtf8(text)});
    recordChange(work, file->id);
    return QJsonObject();
}

} // namespace quenby::localdrive::realtime
