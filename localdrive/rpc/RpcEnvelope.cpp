#include "localdrive/rpc/RpcEnvelope.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

constexpr int parseErrorCode = -32700;
constexpr int invalidRequestCode = -32600;
constexpr int badRequestStatus = 400;
constexpr int notFoundStatus = 404;
constexpr int methodNotFoundCode = -32601;

QJsonObject failure(int code, const QString& reason, const QString& message) {
    const QJsonObject data{{QStringLiteral("domain"), QStringLiteral("global")},
                           {QStringLiteral("reason"), reason},
                           {QStringLiteral("message"), message}};
    return {{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
            {QStringLiteral("id"), QJsonValue::Null},
            {QStringLiteral("error"), QJsonObject{{QStringLiteral("code"), code},
                                                  {QStringLiteral("message"), message},
                                                  {QStringLiteral("data"), QJsonArray{data}}}}};
}

int statusOf(const QJsonObject& reply) {
    const auto error = reply.constFind(QLatin1String("error"));
    if (error == reply.constEnd())
        return 200;
    const int code = (*error)[QLatin1String("code")].toInt();
    if (code == methodNotFoundCode)
        return notFoundStatus;
    return code < 0 ? badRequestStatus : code;
}

RpcReply single(const QJsonObject& reply) {
    return {statusOf(reply), QJsonDocument(reply).toJson(QJsonDocument::Compact)};
}

} // namespace

RpcReply RpcEnvelope::answer(const QByteArray& body, const CallContext& context) const {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        return answerCall(document.object(), context);
    if (!document.isArray())
        return single(failure(parseErrorCode, QStringLiteral("parseError"),
                              QStringLiteral("The request is no JSON object or array.")));
    const QJsonArray calls = document.array();
    if (calls.isEmpty())
        return single(failure(invalidRequestCode, QStringLiteral("badRequest"), QStringLiteral("The batch is empty.")));
    QJsonArray replies;
    for (const QJsonValue call : calls)
        replies.append(reply(call, context));
    return {200, QJsonDocument(replies).toJson(QJsonDocument::Compact)};
}

RpcReply RpcEnvelope::answerCall(const QJsonObject& call, const CallContext& context) const {
    return single(reply(call, context));
}

QJsonObject RpcEnvelope::reply(const QJsonValue& call, const CallContext& context) const {
    const QJsonValue method = call[QLatin1String("method")];
    const QJsonValue id = call[QLatin1String("id")];
    const QJsonValue params = call[QLatin1String("params")];
    const bool hasId = id.isString() || id.isDouble() || id.isNull() || id.isUndefined();
    const bool hasParams = params.isObject() || params.isUndefined();
    if (!call.isObject() || !method.isString() || !hasId || !hasParams)
        return failure(invalidRequestCode, QStringLiteral("badRequest"),
                       QStringLiteral("A call is an object with a method, params and an id."));
    QJsonObject reply = methods_.call(method.toString(), params.toObject(), context);
    reply.insert(QStringLiteral("jsonrpc"), QStringLiteral("2.0"));
    reply.insert(QStringLiteral("id"), id.isUndefined() ? QJsonValue(QJsonValue::Null) : id);
    return reply;
}

} // namespace quenby::localdrive
