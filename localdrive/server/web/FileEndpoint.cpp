#include "localdrive/server/web/FileEndpoint.h"

#include "localdrive/server/web/ByteRange.h"
#include "localdrive/server/web/Drawing.h"
#include "localdrive/server/web/Export.h"
#include "localdrive/store/ApiError.h"

#include <QUrl>

namespace quenby::localdrive {
namespace {

constexpr qint64 pieceSize = 256 * 1024;

void sendError(httplib::Response& response, const QJsonObject& error) {
    const int code = error[QLatin1String("code")].toInt(500);
    sendJson(response, code >= 400 && code < 600 ? code : 400, {{QStringLiteral("error"), error}});
}

// Whatever people keep in the Drive is shown or saved, but never runs with the rights of our pages.
void setContentHeaders(httplib::Response& response, const QString& title) {
    const QByteArray disposition = "attachment; filename*=UTF-8''" + QUrl::toPercentEncoding(title);
    response.set_header("Content-Disposition", disposition.toStdString());
    response.set_header("Content-Security-Policy", "sandbox; default-src 'none'");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Cache-Control", "private, no-cache");
}

// Sends the range piece by piece; the library calls back while the client takes it.
void stream(httplib::Response& response, std::shared_ptr<QFile> file, const ByteRange& range, const QString& type) {
    const auto provider = [file, first = range.first](size_t offset, size_t length, httplib::DataSink& sink) {
        QByteArray piece(std::min<qint64>(pieceSize, static_cast<qint64>(length)), Qt::Uninitialized);
        const qint64 got =
            file->seek(first + static_cast<qint64>(offset)) ? file->read(piece.data(), piece.size()) : -1;
        return got > 0 && sink.write(piece.constData(), static_cast<size_t>(got));
    };
    if (range.length > 0)
        response.set_content_provider(static_cast<size_t>(range.length), type.toStdString(), provider);
    else
        send(response, response.status, {}, type.toUtf8().constData());
}

void sendContent(const httplib::Request& request, httplib::Response& response, FileContent content) {
    const QByteArray tag = '"' + content.md5.toLatin1() + '"';
    response.set_header("ETag", tag.toStdString());
    setContentHeaders(response, content.title);
    response.set_header("Accept-Ranges", "bytes");
    if (header(request, "If-None-Match") == tag) {
        response.status = 304;
        return;
    }
    ByteRange range;
    const RangeKind kind = resolveRange(header(request, "Range"), content.size, range);
    const std::string size = std::to_string(content.size);
    if (kind == RangeKind::unsatisfiable) {
        response.set_header("Content-Range", "bytes */" + size);
        response.status = 416;
        return;
    }
    response.status = kind == RangeKind::part ? 206 : 200;
    if (kind == RangeKind::part) {
        const std::string last = std::to_string(range.first + range.length - 1);
        response.set_header("Content-Range", "bytes " + std::to_string(range.first) + "-" + last + "/" + size);
    }
    stream(response, std::move(content.file), range, content.mimeType);
}

} // namespace

void FileEndpoint::addRoutes(HttpServer& server) {
    using httplib::Request;
    using httplib::Response;
    server.Get("/drive/v2/files/([^/]+)",
               [this](const Request& request, Response& response) { file(request, response); });
    server.Get("/thumbnails/([^/]+)",
               [this](const Request& request, Response& response) { thumbnail(request, response); });
    server.Get("/icons/([a-z]+)\\.png", [](const Request& request, Response& response) {
        const auto png = iconPng(pathPart(request, 1));
        response.set_header("Cache-Control", "public, max-age=86400");
        return png ? send(response, 200, *png, "image/png") : send(response, 404, {}, "text/plain");
    });
    server.Get("/(document|spreadsheets)/export", [this](const Request& request, Response& response) {
        exported(parameter(request, "id"), parameter(request, "format"), request, response);
    });
    server.Get("/(presentation|drawings)/d/([^/]+)/export/([a-z]+)",
               [this](const Request& request, Response& response) {
                   exported(pathPart(request, 2), pathPart(request, 3), request, response);
               });
}

void FileEndpoint::file(const httplib::Request& request, httplib::Response& response) {
    const auto caller = authenticator_.byTokenOrPage(request, response);
    if (!caller)
        return;
    const QString id = pathPart(request, 1);
    if (parameter(request, "alt") != QLatin1String("media"))
        return sendResource(*caller, id, request, response);
    auto content = store_.content(*caller, id, parameter(request, "revisionId"));
    if (!content)
        return sendError(response, toRpcError(content.error()));
    sendContent(request, response, std::move(*content));
}

void FileEndpoint::sendResource(const Caller& caller, const QString& id, const httplib::Request& request,
                                httplib::Response& response) const {
    CallContext context;
    static_cast<Caller&>(context) = caller;
    QJsonObject params{{QStringLiteral("fileId"), id}};
    if (request.has_param("fields"))
        params.insert(QStringLiteral("fields"), parameter(request, "fields"));
    const QJsonObject outcome = methods_.call(QStringLiteral("drive.files.get"), params, context);
    if (outcome.contains(QLatin1String("error")))
        return sendError(response, outcome[QLatin1String("error")].toObject());
    sendJson(response, 200, outcome[QLatin1String("result")].toObject());
}

// Only pictures have one, and it is the picture: whoever shows it scales it.
void FileEndpoint::thumbnail(const httplib::Request& request, httplib::Response& response) {
    const auto caller = authenticator_.byTokenOrPage(request, response);
    if (!caller)
        return;
    auto content = store_.content(*caller, pathPart(request, 1), parameter(request, "revision"));
    if (!content)
        return sendError(response, toRpcError(content.error()));
    if (!content->mimeType.startsWith(QLatin1String("image/")))
        return sendApiError(response, 404, "notFound", QStringLiteral("Only pictures have a thumbnail."));
    sendContent(request, response, std::move(*content));
}

void FileEndpoint::exported(const QString& id, const QString& format, const httplib::Request& request,
                            httplib::Response& response) const {
    const auto caller = authenticator_.byTokenOrPage(request, response);
    if (!caller)
        return;
    CallContext context;
    static_cast<Caller&>(context) = *caller;
    const QJsonObject outcome =
        methods_.call(QStringLiteral("drive.files.get"), {{QStringLiteral("fileId"), id}}, context);
    if (outcome.contains(QLatin1String("error")))
        return sendError(response, outcome[QLatin1String("error")].toObject());
    const QString title = outcome[QLatin1String("result")][QLatin1String("title")].toString();
    const auto made = exportDocument(title, format);
    if (!made)
        return sendApiError(response, 400, "badRequest", QStringLiteral("There is no export as %1.").arg(format));
    setContentHeaders(response, title + QLatin1Char('.') + format);
    send(response, 200, made->bytes, made->mimeType);
}

} // namespace quenby::localdrive
