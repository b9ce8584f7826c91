#include "localdrive/server/fault/FaultyExchange.h"

#include "localdrive/server/fault/RawReply.h"
#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/rest/BatchBody.h"
#include "localdrive/server/rest/RestMethods.h"

#include <QJsonDocument>
#include <QUrl>
#include <QUrlQuery>

namespace quenby::localdrive {
namespace {

FaultAction withErrorBody(FaultAction action, const RequestFacts& request) {
    if (!action.reply || action.reply->errorReason.isEmpty())
        return action;
    const QByteArray path = request.path();
    const bool isRest = path.startsWith(restBase) || path.startsWith(restUploadBase) || isBatchPath(path);
    const QString message = QStringLiteral("This was ordered: %1").arg(action.reply->errorReason);
    const QJsonObject body = apiErrorBody(action.reply->status, action.reply->errorReason, message,
                                          isRest ? ErrorForm::rest : ErrorForm::rpc);
    action.reply->body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return action;
}

} // namespace

FaultyExchange::FaultyExchange(ClientConnection& connection, RequestFacts request, FaultAction action,
                               FaultEffects& effects)
    : connection_(connection)
    , request_(std::move(request))
    , action_(withErrorBody(std::move(action), request_))
    , effects_(effects) {}

bool FaultyExchange::run(const Process& process) {
    applyEffects();
    ShapedStream stream(connection_, request_, action_);
    if (!stream.begin())
        return false;
    const bool isGood = process(stream, action_.replacesWork() ? Work::skipped : Work::done);
    if (!connection_.isOpen() || !action_.rewritesReply())
        return isGood && connection_.isOpen();
    return !stream.heldBack().isEmpty() && sendRewritten(stream) && isGood;
}

void FaultyExchange::applyEffects() {
    if (action_.clockSkew)
        effects_.skewClock(*action_.clockSkew);
    if (action_.expireAccessToken)
        effects_.expireAccessTokens();
    if (action_.revokeRefreshToken)
        effects_.revokeRefreshTokens();
    if (action_.loseSession)
        effects_.loseUploadSession(request_.uploadId());
}

bool FaultyExchange::sendRewritten(ShapedStream& stream) {
    RawReply reply = RawReply::parse(stream.heldBack());
    if (action_.reply && !action_.reply->errorReason.isEmpty())
        reply.setHeader("Content-Type", "application/json");
    if (action_.changeLocation)
        reply.setHeader("Location", changedLocation(reply.header("Location")));
    reply.falsify(action_);
    if (!stream.send(reply.head()))
        return false;
    if (!action_.truncateBody)
        return stream.send(reply.body);
    if (stream.send(QByteArrayView(reply.body).first(std::min<qint64>(reply.body.size(), *action_.truncateBody))))
        connection_.drop();
    return false;
}

// The location that the reply gives, or of the request when it gives none, under the session's new id.
QByteArray FaultyExchange::changedLocation(const QByteArray& location) {
    QUrl url = QUrl::fromEncoded(location.isEmpty() ? "http://" + request_.host + request_.target : location);
    QUrlQuery query(url);
    const QString key = QStringLiteral("upload_id");
    const QByteArray renamed = effects_.renameUploadSession(query.queryItemValue(key).toUtf8());
    if (renamed.isEmpty())
        return location;
    query.removeAllQueryItems(key);
    query.addQueryItem(key, QString::fromLatin1(renamed));
    url.setQuery(query);
    return url.toEncoded();
}

} // namespace quenby::localdrive
