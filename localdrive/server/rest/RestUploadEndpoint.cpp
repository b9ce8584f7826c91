#include "localdrive/server/rest/RestUploadEndpoint.h"

#include "localdrive/server/rest/MultipartBody.h"
#include "localdrive/store/ApiError.h"

#include <QScopeGuard>

namespace quenby::localdrive {
namespace {

// What comes in the request itself is held in memory.
constexpr qint64 largestWhole = qint64{5} * 1024 * 1024;

Error tooLarge() {
    return Error(apiErrorDomain, 413,
                 {{errorKey::reason, QStringLiteral("The content is larger than 5 MiB: announce it instead.")},
                  {apiErrorKey::reason, QStringLiteral("uploadTooLarge")}});
}

// The body as a whole; nothing, but read to its end, when it is longer.
std::optional<QByteArray> readBody(const httplib::ContentReader& read, qint64 longest) {
    QByteArray body;
    bool fits = true;
    read([&](const char* bytes, size_t size) {
        fits = fits && body.size() + static_cast<qint64>(size) <= longest;
        if (fits)
            body.append(bytes, static_cast<qsizetype>(size));
        return true;
    });
    return fits ? std::optional(body) : std::nullopt;
}

// A content in the request, with what is said about it.
struct WholeUpload {
    QByteArray metadata; // JSON; may be empty
    QByteArray type;
    QByteArray content;
};

Result<WholeUpload> wholeUpload(const QString& uploadType, const QByteArray& contentType, const QByteArray& body) {
    if (uploadType == QLatin1String("media"))
        return WholeUpload{{}, contentType, body};
    const auto parts = multipartParts(contentType, body);
    if (!parts || parts->size() != 2)
        return apiError::invalid(QStringLiteral("body"),
                                 QStringLiteral("The body must have two parts: metadata and content."));
    return WholeUpload{parts->at(0).content, parts->at(1).header("Content-Type"), parts->at(1).content};
}

} // namespace

void RestUploadEndpoint::addRoutes(HttpServer& server) {
    const std::string all = std::string(restUploadBase) + "(/[\\s\\S]*)?"; // a parameter may hold line breaks
    const auto beginning = [this](const httplib::Request& request, httplib::Response& response,
                                  const httplib::ContentReader& read) { begin(request, response, read); };
    server.Post(all, beginning);
    server.Patch(all, beginning);
    server.Put(
        all, [this](const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read) {
            if (request.has_param("upload_id"))
                receiver_.put(UploadRoad::rest, request, response, read);
            else
                begin(request, response, read);
        });
}

void RestUploadEndpoint::begin(const httplib::Request& request, httplib::Response& response,
                               const httplib::ContentReader& read) {
    const auto body = readBody(read, largestWhole + 64 * 1024);
    const auto target = RestTarget::parse(QByteArray::fromStdString(request.target));
    const auto method = restUploadMethod(QByteArray::fromStdString(request.method), target.path);
    if (!method)
        return sendRestAnswer(response, noSuchAddress());
    const auto caller = authenticator_.byToken(request, response, ErrorForm::rest);
    if (!caller)
        return;
    if (!body)
        return sendRestAnswer(response, restError(tooLarge()));
    const QString type = target.parameter("uploadType");
    if (type == QLatin1String("resumable"))
        return announce(request, *method, *body, *caller, response);
    if (type == QLatin1String("media") || type == QLatin1String("multipart"))
        return sendRestAnswer(response, takeWhole(request, *method, *body, *caller));
    sendRestAnswer(response,
                   restError(apiError::invalid(QStringLiteral("uploadType"),
                                               QStringLiteral("uploadType is resumable, multipart or media."))));
}

void RestUploadEndpoint::announce(const httplib::Request& request, const RestMethod& method, const QByteArray& body,
                                  const Caller& caller, httplib::Response& response) {
    const auto length = announcedLength(request);
    if (!length)
        return sendRestAnswer(response, restError(length.error()));
    const auto target = RestTarget::parse(QByteArray::fromStdString(request.target));
    const auto params = restParams(method, target, body);
    if (!params)
        return sendRestAnswer(response, restError(params.error()));
    const QJsonObject call{{QStringLiteral("method"), method.name}, {QStringLiteral("params"), params.value()}};
    const QByteArray type = header(request, "X-Upload-Content-Type");
    receiver_.announce({{}, call, QString::fromLatin1(type), *length, caller.user, caller.program, UploadRoad::rest},
                       QString::fromLatin1(target.path) + QStringLiteral("?uploadType=resumable"), response);
}

RestAnswer RestUploadEndpoint::takeWhole(const httplib::Request& request, const RestMethod& method,
                                         const QByteArray& body, const Caller& caller) {
    const auto target = RestTarget::parse(QByteArray::fromStdString(request.target));
    const auto upload = wholeUpload(target.parameter("uploadType"), header(request, "Content-Type"), body);
    if (!upload)
        return restError(upload.error());
    if (upload->content.size() > largestWhole)
        return restError(tooLarge());
    const auto params = restParams(method, target, upload->metadata);
    if (!params)
        return restError(params.error());

    const QString partName = QString::fromLatin1(randomSecret(18));
    const auto discarding = qScopeGuard([&] { blobs_.discardIncoming(partName); });
    const auto part = blobs_.incoming(partName);
    if (!part)
        return restError(part.error());
    if (const auto appended = part.value()->append(0, upload->content); !appended)
        return restError(appended.error());
    const auto staged = part.value()->finish();
    if (!staged)
        return restError(staged.error());

    CallContext context;
    static_cast<Caller&>(context) = caller;
    context.media = *staged;
    context.mediaType = QString::fromLatin1(upload->type);
    const QJsonObject outcome = methods_.call(method.name, params.value(), context);
    if (const auto error = outcome.constFind(QLatin1String("error")); error != outcome.constEnd())
        return restError(error->toObject());
    return {200, outcome[QLatin1String("result")].toObject()};
}

} // namespace quenby::localdrive
