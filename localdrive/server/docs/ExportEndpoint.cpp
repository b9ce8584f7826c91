#include "localdrive/server/docs/ExportEndpoint.h"

#include "localdrive/server/docs/Export.h"
#include "localdrive/server/docs/FileNames.h"
#include "localdrive/server/web/ContentReply.h"

namespace quenby::localdrive {

void ExportEndpoint::addRoutes(HttpServer& server) {
    using httplib::Request;
    using httplib::Response;
    const auto byQuery = [this](const Request& request, Response& response) {
        sendExport(parameter(request, "id"), parameter(request, "format"), request, response);
    };
    server.Get("(?:/docs)?/(?:document|spreadsheets)/export", byQuery);
    server.Get("/docs/(?:document|spreadsheets)/d/[^/]+/export", byQuery);
    server.Get("(?:/docs)?/(?:presentation|drawings)/d/([^/]+)/export/([a-z]+)",
               [this](const Request& request, Response& response) {
                   sendExport(pathPart(request, 1), pathPart(request, 2), request, response);
               });
}

void ExportEndpoint::sendExport(const QString& id, const QString& format, const httplib::Request& request,
                                httplib::Response& response) const {
    const auto caller = authenticator_.byTokenOrPage(request, response);
    if (!caller)
        return;
    const auto document = documents::read(store_, *caller, id);
    if (!document)
        return sendCallError(response, document.error());
    const auto made = exportDocument(*document, format);
    if (!made)
        return sendApiError(response, 400, "badRequest", QStringLiteral("There is no export as %1.").arg(format));
    if (made->bytes.isEmpty() && !made->mimeType.startsWith("text/"))
        return sendApiError(response, 500, "backendError", QStringLiteral("The export could not be made."));
    setContentHeaders(response, fileName(document->file.title, QLatin1Char('.') + format));
    send(response, 200, made->bytes, made->mimeType.constData());
}

} // namespace quenby::localdrive
