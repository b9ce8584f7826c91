#include "localdrive/server/upload/UploadEndpoint.h"

#include "localdrive/store/ApiError.h"

#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

// Bytes are written in pieces of this size, or less when nothing more arrives.
constexpr qsizetype pieceSize = 256 * 1024;

// An unread body would be taken for the next request.
void discardBody(const httplib::ContentReader& read) {
    read([](const char*, size_t) { return true; });
}

void sendError(httplib::Response& response, const Error& error) {
    const QJsonObject object = toRpcError(error);
    sendJson(response, object[QLatin1String("code")].toInt(500), {{QStringLiteral("error"), object}});
}

// The reply to the announcing call.
QJsonObject envelope(const UploadFacts& facts, QJsonObject outcome) {
    outcome.insert(QStringLiteral("jsonrpc"), QStringLiteral("2.0"));
    outcome.insert(QStringLiteral("id"), facts.call[QLatin1String("id")]);
    return outcome;
}

Error missingLength() {
    return apiError::invalid(QStringLiteral("X-Upload-Content-Length"),
                             QStringLiteral("The length of the content must be announced."));
}

} // namespace

UploadEndpoint::UploadEndpoint(UploadSessions& sessions, const RpcMethods& methods, const RpcEndpoint& calls,
                               const Authenticator& authenticator, Statistics& statistics)
    : sessions_(sessions)
    , methods_(methods)
    , calls_(calls)
    , authenticator_(authenticator)
    , statistics_(statistics) {}

void UploadEndpoint::addRoutes(HttpServer& server) {
    server.Post("/upload/rpc", [this](const httplib::Request& request, httplib::Response& response) {
        if (parameter(request, "uploadType") == QLatin1String("resumable"))
            announce(request, response);
        else
            calls_.answer(request, response);
    });
    server.Put("/upload/rpc", [this](const httplib::Request& request, httplib::Response& response,
                                     const httplib::ContentReader& read) { put(request, response, read); });
}

void UploadEndpoint::announce(const httplib::Request& request, httplib::Response& response) {
    const auto caller = authenticator_.byToken(request, response);
    if (!caller)
        return;
    bool isNumber = false;
    const qint64 length = header(request, "X-Upload-Content-Length").toLongLong(&isNumber);
    if (!isNumber || length < 0)
        return sendError(response, missingLength());
    const QJsonObject call = QJsonDocument::fromJson(body(request)).object();
    const QString method = call[QLatin1String("method")].toString();
    if (!RpcMethods::takesMedia(method)) {
        return sendError(response, apiError::invalid(QStringLiteral("method"),
                                                     QStringLiteral("The body must call a method with a content.")));
    }
    if (const auto room = methods_.checkRoom(call[QLatin1String("params")].toObject(), length); !room)
        return sendError(response, room.error());
    const QByteArray type = header(request, "X-Upload-Content-Type");
    const auto uploadId = sessions_.create({{}, call, QString::fromLatin1(type), length, caller->user});
    if (!uploadId)
        return sendError(response, uploadId.error());
    statistics_.secretIssued(*uploadId);
    const QString location = authenticator_.base().toString() +
                             QStringLiteral("/upload/rpc?uploadType=resumable&upload_id=") +
                             QString::fromLatin1(*uploadId);
    response.set_header("Location", location.toStdString());
    response.status = 200;
}

void UploadEndpoint::put(const httplib::Request& request, httplib::Response& response,
                         const httplib::ContentReader& read) {
    const QByteArray uploadId = parameter(request, "upload_id").toUtf8();
    const auto found = sessions_.find(uploadId);
    const auto range = found ? rangeOf(request, (*found)->facts()) : Result<ContentRange>(found.error());
    // The location is the secret: no token is needed beside it.
    if (!authenticator_.acceptsTokenIfSent(request, response))
        return discardBody(read);
    if (!range) {
        discardBody(read);
        return sendError(response, range.error());
    }
    UploadSession& session = **found;
    if (const auto received = receive(session, *range, read); !received)
        return sendError(response, received.error());
    if (session.held() == session.facts().length)
        finish(uploadId, session, response);
    else
        reportHeld(session, response);
}

// What the bytes of a PUT are, or what is wrong with its headers.
Result<ContentRange> UploadEndpoint::rangeOf(const httplib::Request& request, const UploadFacts& facts) const {
    const QByteArray length = header(request, "Content-Length");
    const bool isWhole = !request.has_header("Content-Range");
    const auto range =
        isWhole ? ContentRange{0, facts.length, facts.length} : ContentRange::parse(header(request, "Content-Range"));
    if (!range || range->total != facts.length) {
        return apiError::invalid(QStringLiteral("Content-Range"),
                                 QStringLiteral("Content-Range does not fit the announced length."));
    }
    if (!length.isEmpty() && length.toLongLong() != range->length) {
        return apiError::invalid(QStringLiteral("Content-Length"),
                                 QStringLiteral("Content-Length and Content-Range contradict each other."));
    }
    return *range;
}

// Takes the body's bytes as they arrive. When the connection dies on the way, what arrived is kept. Bytes that do not
// continue what is held are read and ignored, and the reply says where to go on.
Result<void> UploadEndpoint::receive(UploadSession& session, const ContentRange& range,
                                     const httplib::ContentReader& read) {
    const bool isUseful = range.first <= session.held();
    qint64 offset = range.first;
    QByteArray piece;
    piece.reserve(pieceSize);
    MaybeError failure;
    const auto flush = [&] {
        if (isUseful && !failure && !piece.isEmpty()) {
            const auto appended = session.append(offset, piece);
            if (!appended)
                failure = appended.error();
            else
                statistics_.uploadReceived(session.facts().part, piece.size(), *appended);
            offset += piece.size();
        }
        piece.resize(0);
    };
    read([&](const char* bytes, size_t size) {
        piece.append(bytes, static_cast<qsizetype>(size));
        if (piece.size() >= pieceSize)
            flush();
        return true;
    });
    flush();
    return failure ? Result<void>(*failure) : session.sync();
}

void UploadEndpoint::reportHeld(UploadSession& session, httplib::Response& response) const {
    response.status = 308;
    if (const qint64 held = session.held(); held > 0)
        response.set_header("Range", "bytes=0-" + std::to_string(held - 1));
}

void UploadEndpoint::finish(const QByteArray& uploadId, UploadSession& session, httplib::Response& response) {
    const auto outcome = session.complete([this](const UploadFacts& facts, const StagedBlob& content) {
        CallContext context;
        static_cast<Caller&>(context) = authenticator_.callerFor(facts.user);
        context.media = content;
        context.mediaType = facts.mediaType;
        context.beforeCommit = [&facts](Session& transaction, const QJsonObject& result) {
            UploadSessions::noteResult(transaction, facts, result);
        };
        return methods_.call(facts.call[QLatin1String("method")].toString(),
                             facts.call[QLatin1String("params")].toObject(), context);
    });
    if (!outcome)
        return sendError(response, outcome.error());
    const QJsonObject error = (*outcome)[QLatin1String("error")].toObject();
    if (error.isEmpty())
        return sendJson(response, 200, envelope(session.facts(), *outcome));
    const int code = error[QLatin1String("code")].toInt();
    const bool mayPass = code >= 500; // the store failed, not the call: asked again, it may succeed
    if (!mayPass)
        sessions_.remove(uploadId);
    sendJson(response, code >= 400 && code < 600 ? code : 400, envelope(session.facts(), *outcome));
}

} // namespace quenby::localdrive
