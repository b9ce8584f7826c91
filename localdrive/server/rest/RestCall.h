// One call of the REST API, apart from how it travelled: alone in a request or as part of a batch.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/rest/RestMethods.h"

#include <QByteArray>

namespace quenby::localdrive {

struct RestAnswer {
    int status = 200;
    std::optional<QJsonObject> resource; // none with status 204
};

// {"error": {"code", "message", "errors": [...]}} of an error as RpcMethods gives it, under its HTTP status.
RestAnswer restError(const QJsonObject& error);
RestAnswer restError(const Error& error);
// 404: no method has this address.
RestAnswer noSuchAddress();
void sendRestAnswer(httplib::Response& response, const RestAnswer& answer);

// The JSON object that a request's body holds, an empty one when it holds nothing. 400 "parseError" for anything else.
Result<QJsonObject> bodyObject(const QByteArray& body);

// A call's parameters: those of the query, those of the path, which win, and the body as "resource".
Result<QJsonObject> restParams(const RestMethod& method, const RestTarget& target, const QByteArray& body);

// Does what the request asks for.
RestAnswer answerRestCall(const RpcMethods& methods, QByteArrayView verb, QByteArrayView target, const QByteArray& body,
                          const CallContext& context);

} // namespace quenby::localdrive
