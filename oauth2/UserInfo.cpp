#include "oauth2/UserInfo.h"

#include "oauth2/OAuth2Encoding.h"

#include <QStringList>

namespace quenby::oauth2 {
namespace {

QString textOfClaim(const QVariant& claim) {
    return claim.typeId() == QMetaType::QString ? claim.toString() : QString();
}

// Some servers send the boolean as text or as a number.
QString textOfBoolean(const QVariant& claim) {
    if (!claim.isValid() || claim.isNull())
        return {};
    bool isTrue = claim.toBool();
    if (claim.typeId() == QMetaType::QString) {
        const QString text = claim.toString().trimmed().toLower();
        isTrue = text.startsWith(QLatin1Char('t')) || text.startsWith(QLatin1Char('y')) || text.toInt() != 0;
    }
    return isTrue ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

std::optional<UserInfo> userInfoFromJSON(const QByteArray& data) {
    const std::optional<QVariantMap> profile = dictionaryWithJSONData(data);
    if (!profile)
        return std::nullopt;
    return UserInfo{*profile, textOfClaim(profile->value(QStringLiteral("sub"))),
                    textOfClaim(profile->value(QStringLiteral("email"))),
                    textOfBoolean(profile->value(QStringLiteral("email_verified")))};
}

std::optional<UserInfo> userInfoFromIDToken(const QString& token) {
    const QStringList parts = token.split(QLatin1Char('.'));
    if (parts.size() != 3)
        return std::nullopt;
    const std::optional<UserInfo> info = userInfoFromJSON(decodeWebSafeBase64(parts.at(1)));
    return info && !info->userID.isEmpty() && !info->email.isEmpty() ? info : std::nullopt;
}

} // namespace quenby::oauth2
