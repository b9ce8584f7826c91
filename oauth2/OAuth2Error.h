// Errors of authorization and sign-in: domain errorDomain::oauth2 and the codes below.
#pragma once

#include "core/Error.h"
#include "http/URLRequest.h"

namespace quenby::oauth2 {

enum class ErrorCode : int {
    windowClosed = -1000,         // the user closed the sign-in window
    authorizationFailed = -1001,  // no access token for the request, or no code from the provider
    unauthorizableRequest = -1004 // a token would have travelled in the clear
};

// What a token server can answer (RFC 6749, section 5.2). Each is final: asking again with the same credentials
// brings the same answer.
inline const QString errorInvalidRequest = QStringLiteral("invalid_request");
inline const QString errorInvalidClient = QStringLiteral("invalid_client");
inline const QString errorInvalidGrant = QStringLiteral("invalid_grant");
inline const QString errorUnauthorizedClient = QStringLiteral("unauthorized_client");
inline const QString errorUnsupportedGrantType = QStringLiteral("unsupported_grant_type");
inline const QString errorInvalidScope = QStringLiteral("invalid_scope");

bool isFinalServerError(const QString& name);

// The reason tells people what happened and what to do; it must hold no secret.
Error makeError(ErrorCode code, const QString& reason, QVariantMap details = {});

// The method and the redacted address, for errorKey::request.
QString requestForError(const URLRequest& request);

} // namespace quenby::oauth2
