#include "localdrive/server/rest/RestCall.h"

#include "localdrive/store/ApiError.h"

#include <QJsonDocument>

namespace quenby::localdrive {

RestAnswer restError(const QJsonObject& error) {
    QJsonObject told = error;
    told.insert(QStringLiteral("errors"), told.take(QStringLiteral("data")));
    // Codes below 0 are the other road's own.
    const int code = told[QLatin1String("code")].toInt(500);
    const int status = code >= 400 && code < 600 ? code : 400;
    told.insert(QStringLiteral("code"), status);
    return {status, QJsonObject{{QStringLiteral("error"), told}}};
}

RestAnswer restError(const Error& error) { return restError(toRpcError(error)); }

RestAnswer noSuchAddress() {
    return restError(
        Error(apiErrorDomain, 404,
              {{errorKey::reason, QStringLiteral("Not Found")}, {apiErrorKey::reason, QStringLiteral("notFound")}}));
}

void sendRestAnswer(httplib::Response& response, const RestAnswer& answer) {
    response.status = answer.status;
    if (answer.resource)
        sendJson(response, answer.status, *answer.resource);
}

Result<QJsonObject> bodyObject(const QByteArray& body) {
    if (body.trimmed().isEmpty())
        return QJsonObject();
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        return document.object();
    return Error(apiErrorDomain, 400,
                 {{errorKey::reason, QStringLiteral("Parse Error: the body is no JSON object.")},
                  {apiErrorKey::reason, QStringLiteral("parseError")}});
}

Result<QJsonObject> restParams(const RestMethod& method, const RestTarget& target, const QByteArray& body) {
    const Result<QJsonObject> resource = bodyObject(body);
    if (!resource)
        return resource;
    QJsonObject params = target.params();
    for (auto param = method.pathParams.begin(); param != method.pathParams.end(); ++param)
        params.insert(param.key(), *param);
    if (!body.trimmed().isEmpty())
        params.insert(QStringLiteral("resource"), resource.value());
    return params;
}

RestAnswer answerRestCall(const RpcMethods& methods, QByteArrayView verb, QByteArrayView target, const QByteArray& body,
                          const CallContext& context) {
    const RestTarget parsed = RestTarget::parse(target);
    const auto method = restMethod(verb, parsed.path);
    if (!method)
        return noSuchAddress();
    if (parsed.parameter("alt") == QLatin1String("media"))
        return restError(
            apiError::invalid(QStringLiteral("alt"), QStringLiteral("There is no content to be had here.")));
    const Result<QJsonObject> params = restParams(*method, parsed, verb == "GET" ? QByteArray() : body);
    if (!params)
        return restError(params.error());
    const QJsonObject outcome = methods.call(method->name, params.value(), context);
    if (const auto error = outcome.constFind(QLatin1String("error")); error != outcome.constEnd())
        return restError(error->toObject());
    if (method->hasNoResult)
        return {204, std::nullopt};
    return {200, outcome[QLatin1String("result")].toObject()};
}

} // namespace quenby::localdrive
