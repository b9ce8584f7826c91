// Which token request the credentials at hand call for. A pure function: it fetches nothing.
#pragma once

#include "oauth2/OAuth2Encoding.h"

#include <optional>

namespace quenby::oauth2 {

inline const QString grantTypeRefreshToken = QStringLiteral("refresh_token");
inline const QString grantTypeAuthorizationCode = QStringLiteral("authorization_code");

struct TokenRequestInputs {
    QString refreshToken;
    QString refreshScope; // asked for with a refresh only
    QString code;
    QString redirectURI;
    QString scope;
    QString assertion;
    QString assertionGrantType; // the provider's name for JWT bearer assertions (RFC 7523, section 2.1)
    QString clientID;
    QString clientSecret;
    FormFields additionalParameters;
    QMap<QString, FormFields> additionalGrantTypeParameters; // by grant type; they win over all others
};

struct TokenRequest {
    QString fetchType; // one of the fetch types of OAuth2Notifications.h
    FormFields fields;
};

// By a refresh token, else a code, else an assertion; nothing when there is none of them.
std::optional<TokenRequest> makeTokenRequest(const TokenRequestInputs& inputs);

} // namespace quenby::oauth2
