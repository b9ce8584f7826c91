#include "oauth2/OAuth2Parameters.h"

#include "oauth2/OAuth2Encoding.h"
#include "oauth2/TokenResponse.h"

#include <QSet>

#include <cmath>

namespace quenby {
namespace {

namespace key {
const QString accessToken = QStringLiteral("access_token");
const QString refreshToken = QStringLiteral("refresh_token");
const QString code = QStringLiteral("code");
const QString assertion = QStringLiteral("assertion");
const QString refreshScope = QStringLiteral("refreshScope");
const QString error = QStringLiteral("error");
const QString expiresIn = QStringLiteral("expires_in");
const QString tokenType = QStringLiteral("token_type");
const QString scope = QStringLiteral("scope");
const QString userID = QStringLiteral("userID");
const QString email = QStringLiteral("email");
const QString isVerified = QStringLiteral("isVerified");
const QString serviceProvider = QStringLiteral("serviceProvider");
} // namespace key

bool isText(const QString& name) {
    static const QSet<QString> texts{key::accessToken,  key::refreshToken, key::code,       key::assertion,
                                     key::refreshScope, key::error,        key::scope,      key::tokenType,
                                     key::userID,       key::email,        key::isVerified, key::serviceProvider};
    return texts.contains(name);
}

bool mayReplace(const QString& name, const QVariant& value) {
    if (name == key::accessToken)
        return oauth2::isUsableAccessToken(value);
    if (!isText(name))
        return true;
    return value.typeId() == QMetaType::QString && !value.toString().isEmpty();
}

} // namespace

QString OAuth2Parameters::text(const QString& key) const { return parameters_.value(key).toString(); }

void OAuth2Parameters::setText(const QString& key, const QString& value) {
    if (value.isEmpty())
        parameters_.remove(key);
    else
        parameters_.insert(key, value);
}

QString OAuth2Parameters::accessToken() const { return text(key::accessToken); }
void OAuth2Parameters::setAccessToken(const QString& token) { setText(key::accessToken, token); }
QString OAuth2Parameters::refreshToken() const { return text(key::refreshToken); }
void OAuth2Parameters::setRefreshToken(const QString& token) { setText(key::refreshToken, token); }
QString OAuth2Parameters::code() const { return text(key::code); }
void OAuth2Parameters::setCode(const QString& code) { setText(key::code, code); }
QString OAuth2Parameters::assertion() const { return text(key::assertion); }
void OAuth2Parameters::setAssertion(const QString& assertion) { setText(key::assertion, assertion); }
QString OAuth2Parameters::refreshScope() const { return text(key::refreshScope); }
void OAuth2Parameters::setRefreshScope(const QString& scope) { setText(key::refreshScope, scope); }
QString OAuth2Parameters::errorString() const { return text(key::error); }
void OAuth2Parameters::setErrorString(const QString& error) { setText(key::error, error); }
QString OAuth2Parameters::tokenType() const { return text(key::tokenType); }
void OAuth2Parameters::setTokenType(const QString& type) { setText(key::tokenType, type); }
QString OAuth2Parameters::scope() const { return text(key::scope); }
void OAuth2Parameters::setScope(const QString& scope) { setText(key::scope, scope); }
QString OAuth2Parameters::userID() const { return text(key::userID); }
void OAuth2Parameters::setUserID(const QString& userID) { setText(key::userID, userID); }
QString OAuth2Parameters::userEmail() const { return text(key::email); }
void OAuth2Parameters::setUserEmail(const QString& email) { setText(key::email, email); }
QString OAuth2Parameters::userEmailIsVerified() const { return text(key::isVerified); }
void OAuth2Parameters::setUserEmailIsVerified(const QString& isVerified) { setText(key::isVerified, isVerified); }
QString OAuth2Parameters::serviceProvider() const { return text(key::serviceProvider); }
void OAuth2Parameters::setServiceProvider(const QString& provider) { setText(key::serviceProvider, provider); }

std::optional<qint64> OAuth2Parameters::expiresIn() const {
    const QVariant value = parameters_.value(key::expiresIn);
    const bool isNumberOrText = value.typeId() != QMetaType::Bool && value.canConvert<double>();
    bool isNumber = false;
    const double seconds = isNumberOrText ? value.toDouble(&isNumber) : 0;
    if (!isNumber || !(seconds >= 1))
        return std::nullopt;
    constexpr double limit = 1e15; // exact in a double, far beyond every lifetime
    return static_cast<qint64>(std::min(seconds, limit));
}

void OAuth2Parameters::storeExpiresIn(const std::optional<qint64>& seconds) {
    if (seconds)
        parameters_.insert(key::expiresIn, *seconds);
    else
        parameters_.remove(key::expiresIn);
}

QString OAuth2Parameters::persistenceResponseString() const {
    oauth2::FormFields fields;
    for (const QString& name :
         {key::refreshToken, key::serviceProvider, key::userID, key::email, key::isVerified, key::scope}) {
        if (!text(name).isEmpty())
            fields.insert(name, text(name));
    }
    if (!refreshToken().isEmpty() && !accessToken().isEmpty())
        fields.insert(key::accessToken, accessToken());
    return oauth2::encodedQueryParametersForDictionary(fields);
}

void OAuth2Parameters::merge(const QVariantMap& response) {
    if (response.contains(key::accessToken) || response.contains(key::code))
        storeExpiresIn(std::nullopt);
    for (auto entry = response.begin(); entry != response.end(); ++entry) {
        if (mayReplace(entry.key(), entry.value()))
            parameters_.insert(entry.key(), entry.value());
    }
}

} // namespace quenby
