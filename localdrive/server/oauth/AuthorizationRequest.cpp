#include "localdrive/server/oauth/AuthorizationRequest.h"

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/oauth/OAuthError.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrlQuery>

#include <algorithm>
#include <array>

namespace quenby::localdrive {
namespace {

const QString titleRedirectUri = QStringLiteral("urn:ietf:wg:oauth:2.0:oob");
constexpr auto base64url = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

constexpr std::array parameterNames{"client_id", "redirect_uri",   "response_type",        "scope",
                                    "state",     "code_challenge", "code_challenge_method"};

// RFC 8252 section 7.3: programs on this computer listen on a loopback address at any port.
bool isLoopbackUri(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    static const QStringList hosts{QStringLiteral("127.0.0.1"), QStringLiteral("::1"), QStringLiteral("localhost")};
    return url.isValid() && url.scheme() == QLatin1String("http") && hosts.contains(url.host()) && !url.hasFragment();
}

bool isKnownScope(const QString& scope) {
    static const QRegularExpression known(
        QStringLiteral("^(openid|email|profile|https://[^/]+/auth/(drive(\\.[a-z.]+)?|userinfo\\.(email|profile)))$"));
    return known.match(scope).hasMatch();
}

MaybeError answerableFault(const AuthorizationRequest& request, const QString& responseType,
                           const QString& challengeMethod) {
    if (responseType != QLatin1String("code"))
        return oauthError(QStringLiteral("unsupported_response_type"), QStringLiteral("response_type must be code."));
    const QStringList scopes = request.scope.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (scopes.isEmpty() || !std::all_of(scopes.begin(), scopes.end(), isKnownScope))
        return oauthError(QStringLiteral("invalid_scope"), QStringLiteral("The scope is empty or unknown."));
    if (!request.codeChallenge.isEmpty() && challengeMethod != QLatin1String("S256"))
        return oauthError(QStringLiteral("invalid_request"), QStringLiteral("code_challenge_method must be S256."));
    if (!request.codeChallenge.isEmpty() && QByteArray::fromBase64(request.codeChallenge, base64url).size() != 32)
        return oauthError(QStringLiteral("invalid_request"), QStringLiteral("code_challenge is no SHA-256 digest."));
    return std::nullopt;
}

} // namespace

bool AuthorizationRequest::answersInTitle() const { return redirectUri == titleRedirectUri; }

QUrl AuthorizationRequest::answerUrl(const QString& name, const QString& value) const {
    QUrl url(redirectUri);
    QUrlQuery query(url);
    query.addQueryItem(name, value);
    if (!state.isEmpty())
        query.addQueryItem(QStringLiteral("state"), QString::fromLatin1(QUrl::toPercentEncoding(state)));
    url.setQuery(query);
    return url;
}

QByteArray AuthorizationRequest::toField() const {
    const QJsonObject object{{QStringLiteral("client"), clientId},
                             {QStringLiteral("redirect"), redirectUri},
                             {QStringLiteral("scope"), scope},
                             {QStringLiteral("state"), state},
                             {QStringLiteral("challenge"), QString::fromLatin1(codeChallenge)}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toBase64(base64url);
}

AuthorizationRequest AuthorizationRequest::fromField(const QByteArray& field) {
    const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromBase64(field, base64url)).object();
    return {object[QLatin1String("client")].toString(), object[QLatin1String("redirect")].toString(),
            object[QLatin1String("scope")].toString(), object[QLatin1String("state")].toString(),
            object[QLatin1String("challenge")].toString().toLatin1()};
}

std::variant<AuthorizationRequest, AuthorizationRequest::Failure>
AuthorizationRequest::parse(const httplib::Request& request) {
    const AuthorizationRequest asked{parameter(request, "client_id"), parameter(request, "redirect_uri"),
                                     parameter(request, "scope"), parameter(request, "state"),
                                     parameter(request, "code_challenge").toLatin1()};
    const auto refuse = [&asked](const Error& error, bool mayRedirect) {
        return Failure{error, mayRedirect, asked.redirectUri, asked.state};
    };
    const bool repeats = std::any_of(parameterNames.begin(), parameterNames.end(),
                                     [&](const char* name) { return request.get_param_value_count(name) > 1; });
    if (repeats)
        return refuse(oauthError(QStringLiteral("invalid_request"), QStringLiteral("A parameter is repeated.")), false);
    if (asked.clientId.isEmpty())
        return refuse(oauthError(QStringLiteral("invalid_request"), QStringLiteral("client_id is missing.")), false);
    if (!asked.answersInTitle() && !isLoopbackUri(asked.redirectUri)) {
        return refuse(
            oauthError(
                QStringLiteral("redirect_uri_mismatch"),
                QStringLiteral("redirect_uri must be %1 or an http address of this computer.").arg(titleRedirectUri)),
            false);
    }
    if (const auto fault =
            answerableFault(asked, parameter(request, "response_type"), parameter(request, "code_challenge_method")))
        return refuse(*fault, true);
    return asked;
}

} // namespace quenby::localdrive
