#include "localdrive/server/docs/DocumentCalls.h"

#include "localdrive/server/docs/NativeContent.h"
#include "localdrive/server/share/ShareState.h"
#include "localdrive/server/web/ContentReply.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/Documents.h"
#include "localdrive/store/NativeTypes.h"

#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

constexpr size_t longestRequest = 16 * 1024 * 1024;

QJsonObject revisionReply(qint64 revision) { return {{QStringLiteral("revision"), revision}}; }

} // namespace

httplib::Server::Handler DocumentCalls::handler(Answer answer) const {
    return [this, answer = std::move(answer)](const httplib::Request& request, httplib::Response& response) {
        const auto caller = guard_.caller(request, response);
        if (!caller)
            return;
        if (request.body.size() > longestRequest)
            return sendApiError(response, 413, "tooLarge", QStringLiteral("This is too large for a document."));
        const auto outcome = answer(pathPart(request, 1), QJsonDocument::fromJson(body(request)).object(), *caller);
        outcome ? sendJson(response, 200, *outcome) : sendCallError(response, outcome.error());
    };
}

Result<QJsonObject> DocumentCalls::call(const QString& method, const QString& fileId, const Caller& caller) const {
    return sharing::call(methods_, method, {{QStringLiteral("fileId"), fileId}}, caller);
}

void DocumentCalls::addRoutes(HttpServer& server) {
    const std::string folder = "/docs/files/([^/]+)/";
    server.Get(folder + "content", handler([this](const QString& id, const QJsonObject&, const Caller& caller) {
                   const auto document = documents::read(store_, caller, id);
                   return document ? Result<QJsonObject>(revisionReply(document->revision)) : document.error();
               }));
    server.Put(folder + "content", handler([this](const QString& id, const QJsonObject& asked,
                                                  const Caller& caller) -> Result<QJsonObject> {
                   const auto content = NativeContent::fromJson(asked[QLatin1String("content")].toObject());
                   if (!content)
                       return content.error();
                   const qint64 base = asked[QLatin1String("revision")].toInteger(-1);
                   const auto revision = documents::write(store_, caller, id, content->toJson(), base);
                   return revision ? Result<QJsonObject>(revisionReply(*revision)) : revision.error();
               }));
    server.Put(folder + "title", handler([this](const QString& id, const QJsonObject& asked,
                                                const Caller& caller) -> Result<QJsonObject> {
                   const QString title = asked[QLatin1String("title")].toString().trimmed();
                   if (title.isEmpty())
                       return apiError::invalid(QStringLiteral("title"), QStringLiteral("A name can't be empty."));
                   const auto file =
                       sharing::call(methods_, QStringLiteral("drive.files.patch"),
                                     {{QStringLiteral("fileId"), id},
                                      {QStringLiteral("resource"), QJsonObject{{QStringLiteral("title"), title}}}},
                                     caller);
                   if (!file)
                       return file.error();
                   return QJsonObject{{QStringLiteral("title"), (*file)[QLatin1String("title")]}};
               }));
    server.Post(folder + "copy",
                handler([this](const QString& id, const QJsonObject&, const Caller& caller) -> Result<QJsonObject> {
                    const auto file = call(QStringLiteral("drive.files.copy"), id, caller);
                    if (!file)
                        return file.error();
                    const QString link = editLink({}, (*file)[QLatin1String("mimeType")].toString(),
                                                  (*file)[QLatin1String("id")].toString());
                    return QJsonObject{{QStringLiteral("link"), link}};
                }));
    for (const char* verb : {"trash", "untrash"}) {
        const QString method = QStringLiteral("drive.files.") + QLatin1String(verb);
        server.Post(folder + verb, handler([this, method](const QString& id, const QJsonObject&,
                                                          const Caller& caller) -> Result<QJsonObject> {
                        const auto file = call(method, id, caller);
                        if (!file)
                            return file.error();
                        return QJsonObject{{QStringLiteral("trashed"),
                                            (*file)[QLatin1String("labels")][QLatin1String("trashed")].toBool()}};
                    }));
    }
}

} // namespace quenby::localdrive
