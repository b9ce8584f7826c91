// From the bytes of a reply to an object or an error. Pure functions; they run on the parse queue.
#pragma once

#include "core/Error.h"
#include "driveapi/GTLObject.h"

#include <map>

namespace quenby {

// Codes of errorDomain::service.
enum class GTLServiceErrorCode : int {
    batchResultMissing = -3000, // the batch was answered, this member was not
    waitTimedOut = -3001,       // a wait ended without a result
    replyUnusable = -3002,      // the reply is empty, no JSON, or no answer to the call
};

Error serviceError(GTLServiceErrorCode code, const QString& reason);

// Key of Error::details: the HTTP status, an int, behind an error whose code is not the status itself.
inline const QString gtlHTTPStatusKey = QStringLiteral("httpStatus");

struct GTLServiceReply {
    GTLObjectPtr object;
    MaybeError error;
};

// What is known of a reply before it is read.
struct GTLReplyExpectation {
    QByteArray mimeType;    // as the server named it; empty when it named none
    QByteArray contentType; // the same, with its parameters
    const GTLClass* objectClass = nullptr;
    GTLBatchClassMap batchClassMap;
    GTLSurrogates surrogates;
    bool isBatch = false;
    bool isREST = false;
    bool isOfEitherRoad = false; // the end of an upload that may have been announced on the other one
    bool isRESTDataWrapperRequired = false;
    std::map<QString, Error> refusedMembers; // of a batch: they are part of its result
};

// What becomes of a batch of which nothing could be sent.
GTLServiceReply replyWithoutRequest(const GTLReplyExpectation& expected);

// A successful reply's body.
GTLServiceReply parseReply(QByteArray body, const GTLReplyExpectation& expected);

// What becomes of a fetch that ended with an error: the server's own error object when the body holds one, the body's
// text when it is no JSON, else the error as it is.
Error errorFromFetch(const Error& error, int statusCode, const QByteArray& mimeType, const QByteArray& body,
                     const GTLSurrogates& surrogates);

} // namespace quenby
