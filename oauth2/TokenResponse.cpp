#include "oauth2/TokenResponse.h"

#include "oauth2/OAuth2Encoding.h"
#include "oauth2/OAuth2Error.h"

#include <algorithm>

namespace quenby::oauth2 {
namespace {

const QString accessTokenKey = QStringLiteral("access_token");

bool isJSON(const QByteArray& contentType) {
    return contentType.trimmed().toLower().startsWith(QByteArrayLiteral("application/json"));
}

QString serverErrorName(const Error& error) {
    return error.detail(errorKey::json).toMap().value(QStringLiteral("error")).toString();
}

bool isServerSideStatus(const Error& error) { return error.domain() == errorDomain::httpStatus && error.code() >= 500; }

} // namespace

bool isUsableAccessToken(const QVariant& value) {
    if (value.typeId() != QMetaType::QString)
        return false;
    const QString token = value.toString();
    return !token.isEmpty() && std::all_of(token.begin(), token.end(), [](QChar character) {
        return character.unicode() > 0x20 && character.unicode() < 0x7f;
    });
}

Result<QVariantMap> parseTokenResponse(const QByteArray& contentType, const QByteArray& body) {
    const std::optional<QVariantMap> json = isJSON(contentType) ? dictionaryWithJSONData(body) : std::nullopt;
    if (isJSON(contentType) && !json)
        return makeError(ErrorCode::authorizationFailed,
                         QStringLiteral("The token server's answer is not the JSON object that it should be."));
    QVariantMap response = json ? *json : toVariantMap(dictionaryWithResponseData(body));
    if (isUsableAccessToken(response.value(accessTokenKey)))
        return response;
    return makeError(ErrorCode::authorizationFailed,
                     QStringLiteral("The token server's answer holds no usable access token."),
                     json ? QVariantMap{{errorKey::json, *json}} : QVariantMap());
}

Error withServerJSON(const Error& error, const QByteArray& body) {
    const std::optional<QVariantMap> json = dictionaryWithJSONData(body);
    return json && !error.details().contains(errorKey::json) ? error.withDetail(errorKey::json, *json) : error;
}

RefreshFailure refreshFailureOf(const Error& error) {
    const bool isFinal = isFinalServerError(serverErrorName(error)) && !isServerSideStatus(error);
    return isFinal ? RefreshFailure::refused : RefreshFailure::momentary;
}

Error explainedTokenError(const Error& error, const QString& serviceProvider, bool isSigningIn) {
    const QString provider = serviceProvider.isEmpty() ? QStringLiteral("the provider") : serviceProvider;
    if (refreshFailureOf(error) == RefreshFailure::refused) {
        const QString what = isSigningIn ? QStringLiteral("The sign-in was not accepted by %1 (%2). Sign in again.")
                                         : QStringLiteral("The stored sign-in is no longer accepted by %1 (%2). Sign "
                                                          "in again.");
        return error.withDetail(errorKey::reason, what.arg(provider, serverErrorName(error)));
    }
    const QString what =
        isSigningIn ? QStringLiteral("The sign-in with %1 could not be completed. %2 Check the network connection and "
                                     "sign in again.")
                    : QStringLiteral("Access to %1 could not be renewed for the moment. %2 The sign-in stays; check "
                                     "the network connection and try again.");
    const QString cause = error.detail(errorKey::reason).toString();
    return error.withDetail(errorKey::reason, what.arg(provider, cause).simplified());
}

} // namespace quenby::oauth2
