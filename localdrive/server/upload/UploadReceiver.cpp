#include "localdrive/server/upload/UploadReceiver.h"

#include "localdrive/server/rest/RestCall.h"
#include "localdrive/store/ApiError.h"

namespace quenby::localdrive {
namespace {

// Bytes are written in pieces of this size, or less when nothing more arrives.
constexpr qsizetype pieceSize = qsizetype{256} * 1024;
// On the REST road every chunk but the last is a multiple of this.
constexpr qint64 chunkUnit = qint64{256} * 1024;

ErrorForm formOf(UploadRoad road) { return road == UploadRoad::rest ? ErrorForm::rest : ErrorForm::rpc; }

// The reply to the announcing JSON-RPC call.
QJsonObject envelope(const UploadFacts& facts, QJsonObject outcome) {
    outcome.insert(QStringLiteral("jsonrpc"), QStringLiteral("2.0"));
    outcome.insert(QStringLiteral("id"), facts.call[QLatin1String("id")]);
    return outcome;
}

void sendResult(httplib::Response& response, const UploadFacts& facts, const QJsonObject& outcome) {
    if (facts.road == UploadRoad::rpc)
        sendJson(response, 200, envelope(facts, outcome));
    else
        sendJson(response, 200, outcome[QLatin1String("result")].toObject());
}

void sendFailure(httplib::Response& response, const UploadFacts& facts, const QJsonObject& outcome) {
    const QJsonObject error = outcome[QLatin1String("error")].toObject();
    if (facts.road == UploadRoad::rest)
        return sendRestAnswer(response, restError(error));
    const int code = error[QLatin1String("code")].toInt();
    sendJson(response, code >= 400 && code < 600 ? code : 400, envelope(facts, outcome));
}

} // namespace

qint64 discardUpload(const httplib::ContentReader& read) {
    qint64 length = 0;
    read([&length](const char*, size_t size) {
        length += static_cast<qint64>(size);
        return true;
    });
    return length;
}

Result<qint64> announcedLength(const httplib::Request& request) {
    bool isNumber = false;
    const qint64 length = header(request, "X-Upload-Content-Length").toLongLong(&isNumber);
    if (isNumber && length >= 0)
        return length;
    return apiError::invalid(QStringLiteral("X-Upload-Content-Length"),
                             QStringLiteral("The length of the content must be announced."));
}

void sendUploadError(httplib::Response& response, const Error& error, UploadRoad road) {
    if (road == UploadRoad::rest)
        return sendRestAnswer(response, restError(error));
    const QJsonObject object = toRpcError(error);
    sendJson(response, object[QLatin1String("code")].toInt(500), {{QStringLiteral("error"), object}});
}

void UploadReceiver::announce(const UploadFacts& facts, const QString& address, httplib::Response& response) {
    const QString method = facts.call[QLatin1String("method")].toString();
    const QJsonObject params = facts.call[QLatin1String("params")].toObject();
    if (const auto possible = methods_.checkAnnounced(method, params, facts.length); !possible)
        return sendUploadError(response, possible.error(), facts.road);
    const auto uploadId = sessions_.create(facts);
    if (!uploadId)
        return sendUploadError(response, uploadId.error(), facts.road);
    statistics_.secretIssued(*uploadId);
    const QString location =
        authenticator_.base().toString() + address + QStringLiteral("&upload_id=") + QString::fromLatin1(*uploadId);
    response.set_header("Location", location.toStdString());
    response.status = 200;
}

void UploadReceiver::put(UploadRoad road, const httplib::Request& request, httplib::Response& response,
                         const httplib::ContentReader& read) {
    const QByteArray uploadId = parameter(request, "upload_id").toUtf8();
    const auto found = sessions_.find(uploadId);
    const auto range = found ? rangeOf(request, (*found)->facts()) : Result<ContentRange>(found.error());
    // The location is the secret: no token is needed beside it.
    if (!authenticator_.acceptsTokenIfSent(request, response, formOf(road))) {
        discardUpload(read);
        return;
    }
    if (!range) {
        const qint64 refused = discardUpload(read);
        if (!found && found.error().domain() == apiErrorDomain)
            statistics_.uploadRefused(UploadSessions::digest(uploadId), refused);
        return sendUploadError(response, range.error(), found ? (*found)->facts().road : road);
    }
    UploadSession& session = **found;
    if (const auto received = receive(session, *range, read); !received)
        return sendUploadError(response, received.error(), session.facts().road);
    if (session.held() == session.facts().length)
        finish(uploadId, session, response);
    else
        reportHeld(session, response);
}

// What the bytes of a PUT are, or what is wrong with its headers.
Result<ContentRange> UploadReceiver::rangeOf(const httplib::Request& request, const UploadFacts& facts) const {
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
    const bool isLast = range->first + range->length == range->total;
    if (facts.road == UploadRoad::rest && !isLast && range->length % chunkUnit != 0) {
        return apiError::invalid(QStringLiteral("Content-Range"),
                                 QStringLiteral("A chunk that is not the last must be a multiple of 256 KiB long."));
    }
    return *range;
}

// Takes the body's bytes as they arrive. When the connection dies on the way, what arrived is kept. Bytes that do not
// continue what is held are read and ignored, and the reply says where to go on.
Result<void> UploadReceiver::receive(UploadSession& session, const ContentRange& range,
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

void UploadReceiver::reportHeld(UploadSession& session, httplib::Response& response) const {
    response.status = 308;
    if (const qint64 held = session.held(); held > 0)
        response.set_header("Range", "bytes=0-" + std::to_string(held - 1));
}

void UploadReceiver::finish(const QByteArray& uploadId, UploadSession& session, httplib::Response& response) {
    const auto outcome = session.complete([this](const UploadFacts& facts, const StagedBlob& content) {
        CallContext context;
        static_cast<Caller&>(context) = authenticator_.callerFor(facts.user, facts.program);
        context.media = content;
        context.mediaType = facts.mediaType;
        context.beforeCommit = [&facts](Session& transaction, const QJsonObject& result) {
            UploadSessions::noteResult(transaction, facts, result);
        };
        return methods_.call(facts.call[QLatin1String("method")].toString(),
                             facts.call[QLatin1String("params")].toObject(), context);
    });
    if (!outcome)
        return sendUploadError(response, outcome.error(), session.facts().road);
    const QJsonObject error = (*outcome)[QLatin1String("error")].toObject();
    if (error.isEmpty())
        return sendResult(response, session.facts(), *outcome);
    const bool mayPass = error[QLatin1String("code")].toInt() >= 500; // the store failed: asked again, it may succeed
    if (!mayPass)
        sessions_.remove(uploadId);
    sendFailure(response, session.facts(), *outcome);
}

} // namespace quenby::localdrive
