#include "localdrive/server/upload/UploadEndpoint.h"

#include "localdrive/store/ApiError.h"

#include <QJsonDocument>

namespace quenby::localdrive {

void UploadEndpoint::addRoutes(HttpServer& server) {
    server.Post("/upload/rpc", [this](const httplib::Request& request, httplib::Response& response) {
        if (calls_.isOpenTo(request) && parameter(request, "uploadType") == QLatin1String("resumable"))
            announce(request, response);
        else
            calls_.answer(request, response);
    });
    server.Put("/upload/rpc",
               [this](const httplib::Request& request, httplib::Response& response,
                      const httplib::ContentReader& read) { receiver_.put(UploadRoad::rpc, request, response, read); });
}

void UploadEndpoint::announce(const httplib::Request& request, httplib::Response& response) {
    const auto caller = authenticator_.byToken(request, response);
    if (!caller)
        return;
    const auto length = announcedLength(request);
    if (!length)
        return sendUploadError(response, length.error(), UploadRoad::rpc);
    const QJsonObject call = QJsonDocument::fromJson(body(request)).object();
    if (!RpcMethods::takesMedia(call[QLatin1String("method")].toString())) {
        const Error error =
            apiError::invalid(QStringLiteral("method"), QStringLiteral("The body must call a method with a content."));
        return sendUploadError(response, error, UploadRoad::rpc);
    }
    const QByteArray type = header(request, "X-Upload-Content-Type");
    receiver_.announce({{}, call, QString::fromLatin1(type), *length, caller->user, caller->program, UploadRoad::rpc},
                       QStringLiteral("/upload/rpc?uploadType=resumable"), response);
}

} // namespace quenby::localdrive
