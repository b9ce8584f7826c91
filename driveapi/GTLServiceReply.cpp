#include "driveapi/GTLServiceReply.h"

#include "core/Redaction.h"
#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/JSONArray.h"
#include "driveapi/rest/RestBatch.h"
#include "driveapi/rest/RestError.h"

namespace quenby {
namespace {

GTLServiceReply failed(const Error& error) { return {nullptr, error}; }

GTLServiceReply unusable(const QString& reason) {
    return failed(serviceError(GTLServiceErrorCode::replyUnusable, reason));
}

bool mayBeJSON(const QByteArray& mimeType) {
    return mimeType.isEmpty() || mimeType.contains("json") || mimeType.contains("javascript");
}

// No JSON although it was said to be.
GTLServiceReply cutShort(const Error& error) {
    const QString reason =
        QStringLiteral("The service's reply cannot be read, it may have been cut short; try again. ") +
        error.detail(errorKey::reason).toString();
    return failed(error.withDetail(errorKey::reason, reason));
}

GTLServiceReply somethingElse(const QByteArray& mimeType) {
    return unusable(QStringLiteral("The reply is %1 instead of JSON. A sign-in page of the network or a proxy may have "
                                   "answered in the service's place: check the connection and try again.")
                        .arg(redaction::text(QString::fromLatin1(mimeType))));
}

Error errorFromObject(const JSONValue& error, const GTLSurrogates& surrogates) {
    const auto object = std::dynamic_pointer_cast<GTLErrorObject>(
        GTLObject::objectForJSON(error, &GTLErrorObject::classDescriptor(), surrogates));
    return (object ? object : GTLErrorObject::object())->foundationError();
}

GTLServiceReply objectReply(const JSONValue& json, const GTLReplyExpectation& expected) {
    if (json.isUndefined() && expected.objectClass)
        return unusable(QStringLiteral("The service's reply holds neither a result nor an error; try again."));
    return {GTLObject::objectForJSON(json, expected.objectClass, expected.surrogates, expected.batchClassMap),
            std::nullopt};
}

// The replies to the calls of a REST batch become what a batch on the first road is answered with.
GTLServiceReply batchReply(const JSONArrayPtr& replies, const GTLReplyExpectation& expected) {
    for (const auto& [requestID, refusal] : expected.refusedMembers) {
        const auto error = GTLErrorObject::underlyingObjectForError(refusal);
        replies->append(JSONDictionary::make({{"id", requestID}, {"error", error->JSON()}}));
    }
    return objectReply(replies, expected);
}

GTLServiceReply restBatchReply(const QByteArray& body, const GTLReplyExpectation& expected) {
    const auto replies = repliesInBatchAnswer(expected.contentType, body, expected.batchClassMap.keys());
    return replies ? batchReply(*replies, expected) : failed(replies.error());
}

bool isEnvelope(const JSONValue& json) {
    const JSONDictionaryPtr reply = json.dictionary();
    return reply && (reply->contains("jsonrpc") || reply->contains("result") || reply->contains("error"));
}

GTLServiceReply restReply(const JSONValue& json, const GTLReplyExpectation& expected) {
    if (!expected.isRESTDataWrapperRequired)
        return objectReply(json, expected);
    const JSONDictionaryPtr wrapper = json.dictionary();
    return objectReply(wrapper ? wrapper->value("data") : JSONValue(), expected);
}

GTLServiceReply rpcReply(const JSONValue& json, const GTLReplyExpectation& expected) {
    if (expected.isBatch && json.isArray())
        return objectReply(json, expected);
    const JSONDictionaryPtr response = json.dictionary();
    if (!response)
        return unusable(QStringLiteral("The service's reply is no answer to this call; try again."));
    if (const JSONValue error = response->value("error"); error.isDictionary())
        return failed(errorFromObject(error, expected.surrogates));
    if (expected.isBatch)
        return unusable(QStringLiteral("The service answered a batch with a single reply; send its calls one by one."));
    return objectReply(response->value("result"), expected);
}

} // namespace

Error serviceError(GTLServiceErrorCode code, const QString& reason) {
    return Error(errorDomain::service, static_cast<qint64>(code), {{errorKey::reason, reason}});
}

GTLServiceReply parseReply(QByteArray body, const GTLReplyExpectation& expected) {
    if (body.isEmpty()) {
        if (!expected.objectClass)
            return {};
        return unusable(QStringLiteral("The service sent an empty reply; try again."));
    }
    if (expected.isREST && expected.isBatch)
        return restBatchReply(body, expected);
    const Result<JSONValue> json = GTLJSONParser::objectWithData(std::move(body));
    if (!json)
        return mayBeJSON(expected.mimeType) ? cutShort(json.error()) : somethingElse(expected.mimeType);
    const bool isREST = expected.isOfEitherRoad ? !isEnvelope(*json) : expected.isREST;
    return isREST ? restReply(*json, expected) : rpcReply(*json, expected);
}

GTLServiceReply replyWithoutRequest(const GTLReplyExpectation& expected) {
    return batchReply(JSONArray::make(), expected);
}

Error errorFromFetch(const Error& error, int statusCode, const QByteArray& mimeType, const QByteArray& body,
                     const GTLSurrogates& surrogates) {
    if (statusCode <= 299 || body.isEmpty())
        return error;
    if (!mimeType.startsWith("application/json")) {
        return Error(errorDomain::httpStatus, statusCode,
                     {{errorKey::reason, redaction::text(QString::fromUtf8(body))}, {errorKey::data, body}});
    }
    const Result<JSONValue> json = GTLJSONParser::objectWithData(body);
    if (!json)
        return json.error().withDetail(gtlHTTPStatusKey, statusCode);
    const JSONDictionaryPtr dictionary = json->dictionary();
    const JSONValue structured = dictionary ? dictionary->value("error") : JSONValue();
    if (!structured.isDictionary())
        return error;
    return errorFromObject(rpcFormOfError(structured.dictionary(), statusCode), surrogates)
        .withDetail(gtlHTTPStatusKey, statusCode);
}

} // namespace quenby
