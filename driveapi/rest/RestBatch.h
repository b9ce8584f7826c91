// Several calls in one request on the second road: multipart/mixed of application/http, each part under a Content-ID
// that is made from the call's request ID. The answer's parts name it again and come in any order.
#pragma once

#include "core/Result.h"
#include "driveapi/GTLBatchQuery.h"
#include "driveapi/JSONArray.h"
#include "driveapi/rest/RestRequest.h"

#include <vector>

namespace quenby {

// More calls than these are not taken in one request.
inline constexpr qsizetype maximumRestBatchCalls = 100;

struct RestBatchBody {
    QByteArray contentType;
    QByteArray bytes;
};

// One call of the batch, with header fields of its own.
struct RestBatchCall {
    QString requestID;
    GTLStringMap additionalHTTPHeaders;
    RestRequest request;
};

RestBatchBody restBatchBody(const std::vector<RestBatchCall>& calls);

// The replies to these calls as the first road would have sent them: {"id", "result"} or {"id", "error"}. A call
// without an answer has no reply there. An error when the answer as a whole cannot be read.
Result<JSONArrayPtr> repliesInBatchAnswer(const QByteArray& contentType, const QByteArray& body,
                                          const QStringList& requestIDs);

} // namespace quenby
