#include "localdrive/server/docs/ArchiveEndpoint.h"

#include "localdrive/server/docs/ArchiveStream.h"
#include "localdrive/server/docs/FileNames.h"
#include "localdrive/server/share/ShareState.h"
#include "localdrive/server/web/ContentReply.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr qsizetype mostWishes = 256;
constexpr qsizetype mostFiles = 1000;

// A single one lends its name.
QString archiveName(const QList<QJsonObject>& files, const QDateTime& now) {
    const QString several = QStringLiteral("Drive %1").arg(now.toLocalTime().toString(QStringLiteral("yyyy-MM-dd")));
    const QString name = files.size() == 1 ? files.first()[QLatin1String("title")].toString() : several;
    return fileName(name, QStringLiteral(".zip"));
}

} // namespace

void ArchiveEndpoint::addRoutes(HttpServer& server) {
    using httplib::Request;
    using httplib::Response;
    server.Post("/web/archive", [this](const Request& request, Response& response) { note(request, response); });
    server.Get("/e/export-result",
               [this](const Request& request, Response& response) { sendArchive(request, response); });
}

void ArchiveEndpoint::note(const httplib::Request& request, httplib::Response& response) {
    const auto caller = guard_.caller(request, response);
    if (!caller)
        return;
    QStringList ids;
    for (const QJsonValue id : QJsonDocument::fromJson(body(request)).object()[QLatin1String("ids")].toArray())
        if (!ids.contains(id.toString()))
            ids.append(id.toString());
    if (ids.isEmpty() || ids.size() > mostFiles)
        return sendApiError(response, 400, "invalid", QStringLiteral("Choose between 1 and %1 files.").arg(mostFiles));
    if (const auto files = find(ids, *caller); !files)
        return sendCallError(response, files.error());
    const Wish wish{QString::fromLatin1(randomSecret(18)), caller->user.emailAddress, ids};
    {
        const std::lock_guard lock(mutex_);
        if (wishes_.size() == mostWishes)
            wishes_.removeFirst();
        wishes_.append(wish);
    }
    sendJson(response, 200, {{QStringLiteral("archiveId"), wish.archiveId}});
}

QStringList ArchiveEndpoint::wished(const QString& archiveId, const Caller& caller) const {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(wishes_.begin(), wishes_.end(), [&](const Wish& wish) {
        return wish.archiveId == archiveId && wish.emailAddress == caller.user.emailAddress;
    });
    return found == wishes_.end() ? QStringList() : found->fileIds;
}

Result<QList<QJsonObject>> ArchiveEndpoint::find(const QStringList& ids, const Caller& caller) const {
    QList<QJsonObject> files;
    for (const QString& id : ids) {
        const auto file =
            sharing::call(methods_, QStringLiteral("drive.files.get"), {{QStringLiteral("fileId"), id}}, caller);
        if (!file)
            return file.error();
        files.append(*file);
    }
    return files;
}

void ArchiveEndpoint::sendArchive(const httplib::Request& request, httplib::Response& response) const {
    const auto caller = guard_.visitor(request, response);
    if (!caller)
        return;
    const QStringList ids = wished(parameter(request, "archiveId"), *caller);
    const auto files = find(ids, *caller);
    if (ids.isEmpty() || !files) {
        return frame_.showMessage(404, QStringLiteral("There is no such archive"),
                                  QStringLiteral("Choose the files once more, and download them again."), response);
    }
    setContentHeaders(response, archiveName(*files, caller->now));
    const auto stream = std::make_shared<ArchiveStream>(store_, methods_, *caller, *files);
    response.set_chunked_content_provider("application/zip", [stream](size_t, httplib::DataSink& sink) {
        const auto step = stream->next(
            [&sink](QByteArrayView piece) { return sink.write(piece.data(), static_cast<size_t>(piece.size())); });
        if (step == ArchiveStream::Step::done)
            sink.done();
        return step != ArchiveStream::Step::failed;
    });
}

} // namespace quenby::localdrive
