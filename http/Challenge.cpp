#include "http/Challenge.h"

#include <QRegularExpression>

namespace quenby {

std::optional<PasswordChallenge> passwordChallenge(const HTTPResponse& response) {
    const bool isProxy = response.statusCode == 407;
    if (response.statusCode != 401 && !isProxy)
        return std::nullopt;
    // RFC 9110, section 11.6.1: schemes stand at the start of the field or after a comma, and are not followed by "=".
    static const QRegularExpression schemeName(
        QStringLiteral("(?:^|,)\\s*([A-Za-z][A-Za-z0-9._-]*)(?=\\s+[^=,\\s]|\\s*(?:,|$))"));
    static const QRegularExpression realm(QStringLiteral("realm\\s*=\\s*\"?([^\",]*)"),
                                          QRegularExpression::CaseInsensitiveOption);
    const QString field =
        QString::fromUtf8(response.headers.value(isProxy ? "Proxy-Authenticate" : "WWW-Authenticate"));
    std::optional<ChallengeScheme> best;
    for (auto match = schemeName.globalMatch(field); match.hasNext();) {
        const QString name = match.next().captured(1).toLower();
        if (name == QLatin1String("bearer"))
            return std::nullopt;
        if (name == QLatin1String("digest"))
            best = ChallengeScheme::digest;
        else if (name == QLatin1String("basic") && !best)
            best = ChallengeScheme::basic;
    }
    if (!best)
        return std::nullopt;
    AuthenticationChallenge challenge;
    challenge.host = response.url.host();
    challenge.realm = realm.match(field).captured(1);
    challenge.isProxy = isProxy;
    return PasswordChallenge{*best, challenge};
}

} // namespace quenby
