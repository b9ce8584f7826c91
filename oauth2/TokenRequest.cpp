#include "oauth2/TokenRequest.h"

#include "oauth2/OAuth2Notifications.h"

namespace quenby::oauth2 {
namespace {

const QString grantTypeKey = QStringLiteral("grant_type");

void insertUnlessEmpty(FormFields& fields, const QString& key, const QString& value) {
    if (!value.isEmpty())
        fields.insert(key, value);
}

std::optional<TokenRequest> grantFor(const TokenRequestInputs& inputs) {
    FormFields fields;
    if (!inputs.refreshToken.isEmpty()) {
        fields.insert(QStringLiteral("refresh_token"), inputs.refreshToken);
        insertUnlessEmpty(fields, QStringLiteral("scope"), inputs.refreshScope);
        fields.insert(grantTypeKey, grantTypeRefreshToken);
        return TokenRequest{kGTMOAuth2FetchTypeRefresh, fields};
    }
    if (!inputs.code.isEmpty()) {
        fields.insert(QStringLiteral("code"), inputs.code);
        insertUnlessEmpty(fields, QStringLiteral("redirect_uri"), inputs.redirectURI);
        insertUnlessEmpty(fields, QStringLiteral("scope"), inputs.scope);
        fields.insert(grantTypeKey, grantTypeAuthorizationCode);
        return TokenRequest{kGTMOAuth2FetchTypeToken, fields};
    }
    if (!inputs.assertion.isEmpty()) {
        fields.insert(QStringLiteral("assertion"), inputs.assertion);
        fields.insert(grantTypeKey, inputs.assertionGrantType);
        return TokenRequest{kGTMOAuth2FetchTypeAssertion, fields};
    }
    return std::nullopt;
}

} // namespace

std::optional<TokenRequest> makeTokenRequest(const TokenRequestInputs& inputs) {
    std::optional<TokenRequest> request = grantFor(inputs);
    if (!request)
        return std::nullopt;
    FormFields& fields = request->fields;
    const QString grantType = fields.value(grantTypeKey);
    insertUnlessEmpty(fields, QStringLiteral("client_id"), inputs.clientID);
    insertUnlessEmpty(fields, QStringLiteral("client_secret"), inputs.clientSecret);
    fields.insert(inputs.additionalParameters);
    fields.insert(inputs.additionalGrantTypeParameters.value(grantType));
    return request;
}

} // namespace quenby::oauth2
