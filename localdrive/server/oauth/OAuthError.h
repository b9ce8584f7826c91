// Failures of the OAuth endpoints: a core Error whose code is the HTTP status, errorKey::error the name that RFC 6749
// gives it, and errorKey::reason the description.
#pragma once

#include "core/Error.h"

namespace quenby::localdrive {

inline Error oauthError(const QString& name, const QString& description, int status = 400) {
    return Error(QStringLiteral("org.quenby.LocalDriveOAuth"), status,
                 {{errorKey::error, name}, {errorKey::reason, description}});
}

// A code or refresh token that does not hold, for whatever reason: RFC 6749 section 5.2 has one name for all.
inline Error invalidGrant(const QString& description) {
    return oauthError(QStringLiteral("invalid_grant"), description);
}

} // namespace quenby::localdrive
