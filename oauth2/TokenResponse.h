// What a token server's answer means.
#pragma once

#include "core/Error.h"
#include "core/Result.h"

#include <QByteArray>
#include <QVariantMap>

namespace quenby {

// Why the last refresh brought no access token.
enum class RefreshFailure {
    none,      // it did bring one, or there was none yet
    refused,   // the server does not accept the credentials: a new sign-in is needed
    momentary, // network, server or an unreadable answer: the sign-in stays, a later request tries again
};

} // namespace quenby

namespace quenby::oauth2 {

// Of a successful response: JSON when the content type says so, form encoding otherwise. Without an access token
// that can be sent it is an error (ErrorCode::authorizationFailed), with the server's JSON under errorKey::json.
Result<QVariantMap> parseTokenResponse(const QByteArray& contentType, const QByteArray& body);

// Whether a value may stand in an Authorization header: a non-empty string of visible ASCII (RFC 6749, appendix A.12).
bool isUsableAccessToken(const QVariant& value);

// The error of a failed response with the server's JSON object, if the body is one, under errorKey::json.
Error withServerJSON(const Error& error, const QByteArray& body);

// Whether asking again with the same credentials can help.
RefreshFailure refreshFailureOf(const Error& error);

// The same error with a reason that says what to do. Only server error names that RFC 6749 knows are repeated in it:
// other text from the server could echo a secret.
Error explainedTokenError(const Error& error, const QString& serviceProvider, bool isSigningIn);

} // namespace quenby::oauth2
