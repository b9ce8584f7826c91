#include "localdrive/server/web/FileEndpoint.h"

#include "localdrive/server/rest/RestCall.h"
#include "localdrive/server/web/ContentReply.h"
#include "localdrive/server/web/Drawing.h"

namespace quenby::localdrive {

void FileEndpoint::addRoutes(HttpServer& server) {
    using httplib::Request;
    using httplib::Response;
    server.Get("/thumbnails/([^/]+)",
               [this](const Request& request, Response& response) { thumbnail(request, response); });
    server.Get("/icons/([a-z]+)\\.png", [](const Request& request, Response& response) {
        const auto png = iconPng(pathPart(request, 1));
        response.set_header("Cache-Control", "public, max-age=86400");
        return png ? send(response, 200, *png, "image/png") : send(response, 404, {}, "text/plain");
    });
    // Of any number, whether somebody has it or not: the address tells nothing.
    server.Get("/faces/([0-9]{1,20})\\.png", [](const Request& request, Response& response) {
        response.set_header("Cache-Control", "public, max-age=86400");
        const quint64 number = pathPart(request, 1).toULongLong();
        send(response, 200, facePng(static_cast<quint32>(number ^ (number >> 32U))), "image/png");
    });
}

void FileEndpoint::content(const QString& fileId, const httplib::Request& request, httplib::Response& response) {
    const auto caller = authenticator_.byTokenOrPage(request, response, ErrorForm::rest);
    if (!caller)
        return;
    auto content = store_.content(*caller, fileId, parameter(request, "revisionId"));
    if (!content)
        return sendRestAnswer(response, restError(content.error()));
    sendContent(request, response, std::move(*content));
}

// Only pictures have one, and it is the picture: whoever shows it scales it.
void FileEndpoint::thumbnail(const httplib::Request& request, httplib::Response& response) {
    const auto caller = authenticator_.byTokenOrPage(request, response);
    if (!caller)
        return;
    auto content = store_.content(*caller, pathPart(request, 1), parameter(request, "revision"));
    if (!content)
        return sendCallError(response, content.error());
    if (!content->mimeType.startsWith(QLatin1String("image/")))
        return sendApiError(response, 404, "notFound", QStringLiteral("Only pictures have a thumbnail."));
    sendContent(request, response, std::move(*content));
    if (!request.has_param("revision"))
        return;
    // A revision's content never changes: browsers need not ask again.
    response.headers.erase("Cache-Control");
    response.set_header("Cache-Control", "private, max-age=86400, immutable");
}

} // namespace quenby::localdrive
