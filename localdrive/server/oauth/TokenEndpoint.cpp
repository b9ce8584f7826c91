#include "localdrive/server/oauth/TokenEndpoint.h"

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/oauth/OAuthError.h"

#include <QJsonDocument>
#include <QMessageAuthenticationCode>

#include <algorithm>
#include <array>

namespace quenby::localdrive {
namespace {

constexpr auto base64url = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

constexpr std::array singleParameters{"grant_type",    "code",  "redirect_uri",  "client_id",
                                      "client_secret", "scope", "refresh_token", "code_verifier"};

QByteArray jwtPart(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toBase64(base64url);
}

void sendError(httplib::Response& response, const Error& error) {
    const QString name = error.detail(errorKey::error).toString();
    const bool isOurs = !name.isEmpty();
    const int status = isOurs ? static_cast<int>(error.code()) : 500;
    if (status == 401)
        response.set_header("WWW-Authenticate", "Basic realm=\"token\"");
    response.set_header("Cache-Control", "no-store");
    sendJson(response, status,
             {{QStringLiteral("error"), isOurs ? name : QStringLiteral("server_error")},
              {QStringLiteral("error_description"), error.detail(errorKey::reason).toString()}});
}

// The user-info claims that the scope covers.
QJsonObject claims(const Grant& grant) {
    QJsonObject object{{QStringLiteral("sub"), grant.user.permissionId()}};
    if (grant.scope.contains(QLatin1String("email"))) {
        object.insert(QStringLiteral("email"), grant.user.emailAddress);
        object.insert(QStringLiteral("email_verified"), true);
    }
    if (grant.scope.contains(QLatin1String("profile")))
        object.insert(QStringLiteral("name"), grant.user.displayName);
    return object;
}

} // namespace

TokenEndpoint::TokenEndpoint(TokenStore& tokens, Clients clients, const ServerClock& clock, QUrl issuer,
                             Statistics& statistics)
    : tokens_(tokens)
    , clients_(std::move(clients))
    , clock_(clock)
    , issuer_(std::move(issuer))
    , statistics_(statistics) {}

void TokenEndpoint::addRoutes(HttpServer& server) {
    const auto revoking = [this](const httplib::Request& request, httplib::Response& response) {
        revoke(request, response);
    };
    server.Post("/o/oauth2/token",
                [this](const httplib::Request& request, httplib::Response& response) { token(request, response); });
    server.Post("/o/oauth2/revoke", revoking);
    server.Get("/o/oauth2/revoke", revoking);
    server.Get("/oauth2/v3/userinfo", [this](const auto& request, auto& response) { userInfo(request, response); });
}

void TokenEndpoint::token(const httplib::Request& request, httplib::Response& response) {
    const auto client = authenticate(request);
    if (!client)
        return sendError(response, client.error());
    const auto tokens = issue(request, *client);
    if (!tokens)
        return sendError(response, tokens.error());
    response.set_header("Cache-Control", "no-store");
    sendJson(response, 200, tokenAnswer(*tokens, client->secret));
}

Result<TokenEndpoint::Client> TokenEndpoint::authenticate(const httplib::Request& request) const {
    Client client{parameter(request, "client_id"), parameter(request, "client_secret").toUtf8(), false};
    const QByteArray authorization = header(request, "Authorization");
    if (authorization.startsWith("Basic ")) {
        const QByteArray pair = QByteArray::fromBase64(authorization.mid(6));
        const qsizetype colon = pair.indexOf(':');
        client = {QUrl::fromPercentEncoding(pair.left(colon)), QByteArray::fromPercentEncoding(pair.mid(colon + 1)),
                  false};
    }
    if (client.id.isEmpty())
        return oauthError(QStringLiteral("invalid_request"), QStringLiteral("client_id is missing."));
    const auto pinned = clients_.pinned.find(client.id);
    if (pinned == clients_.pinned.end() && clients_.only)
        return oauthError(QStringLiteral("invalid_client"), QStringLiteral("The client is unknown."), 401);
    if (pinned != clients_.pinned.end() && !equalSecrets(pinned->toUtf8(), client.secret))
        return oauthError(QStringLiteral("invalid_client"), QStringLiteral("The client secret is wrong."), 401);
    client.isPublic = pinned != clients_.pinned.end() && pinned->isEmpty();
    statistics_.secretIssued(client.secret);
    return client;
}

Result<IssuedTokens> TokenEndpoint::issue(const httplib::Request& request, const Client& client) {
    const bool repeats = std::any_of(singleParameters.begin(), singleParameters.end(),
                                     [&](const char* name) { return request.get_param_value_count(name) > 1; });
    if (repeats)
        return oauthError(QStringLiteral("invalid_request"), QStringLiteral("A parameter is repeated."));
    const QString grantType = parameter(request, "grant_type");
    const auto needed = [&request](const char* name) -> Result<QByteArray> {
        const QByteArray value = parameter(request, name).toUtf8();
        if (value.isEmpty())
            return oauthError(QStringLiteral("invalid_request"),
                              QStringLiteral("%1 is missing.").arg(QLatin1String(name)));
        return value;
    };
    if (grantType == QLatin1String("authorization_code")) {
        const auto code = needed("code");
        return code ? tokens_.redeemCode(*code, client.id, parameter(request, "redirect_uri"),
                                         parameter(request, "code_verifier").toUtf8(), client.isPublic)
                    : code.error();
    }
    if (grantType == QLatin1String("refresh_token")) {
        const auto refreshToken = needed("refresh_token");
        return refreshToken ? tokens_.refresh(*refreshToken, client.id) : refreshToken.error();
    }
    if (grantType.isEmpty())
        return oauthError(QStringLiteral("invalid_request"), QStringLiteral("grant_type is missing."));
    return oauthError(QStringLiteral("unsupported_grant_type"),
                      QStringLiteral("Only authorization_code and refresh_token are known here."));
}

QJsonObject TokenEndpoint::tokenAnswer(const IssuedTokens& tokens, const QByteArray& clientSecret) const {
    const QByteArray identity = identityToken(tokens.grant, clientSecret);
    for (const QByteArray& secret : {tokens.accessToken, tokens.refreshToken, identity})
        statistics_.secretIssued(secret);
    QJsonObject answer{{QStringLiteral("access_token"), QString::fromLatin1(tokens.accessToken)},
                       {QStringLiteral("expires_in"), static_cast<qint64>(tokens.lifetime.count())},
                       {QStringLiteral("token_type"), QStringLiteral("Bearer")},
                       {QStringLiteral("scope"), tokens.grant.scope},
                       {QStringLiteral("id_token"), QString::fromLatin1(identity)}};
    if (!tokens.refreshToken.isEmpty())
        answer.insert(QStringLiteral("refresh_token"), QString::fromLatin1(tokens.refreshToken));
    return answer;
}

// RFC 7519 with HS256. A client without a secret could check no signature: for it the token is unsecured (section 6).
QByteArray TokenEndpoint::identityToken(const Grant& grant, const QByteArray& clientSecret) const {
    const qint64 now = clock_.now().toSecsSinceEpoch();
    QJsonObject content = claims(grant);
    content.insert(QStringLiteral("iss"), issuer_.toString());
    content.insert(QStringLiteral("aud"), grant.clientId);
    content.insert(QStringLiteral("iat"), now);
    content.insert(QStringLiteral("exp"), now + 3600);
    const QString algorithm = clientSecret.isEmpty() ? QStringLiteral("none") : QStringLiteral("HS256");
    const QJsonObject head{{QStringLiteral("alg"), algorithm}, {QStringLiteral("typ"), QStringLiteral("JWT")}};
    const QByteArray signedPart = jwtPart(head) + '.' + jwtPart(content);
    if (clientSecret.isEmpty())
        return signedPart + '.';
    return signedPart + '.' +
           QMessageAuthenticationCode::hash(signedPart, clientSecret, QCryptographicHash::Sha256).toBase64(base64url);
}

void TokenEndpoint::revoke(const httplib::Request& request, httplib::Response& response) {
    const auto revoked = tokens_.revoke(parameter(request, "token").toUtf8());
    if (!revoked)
        return sendError(response, revoked.error());
    if (!*revoked)
        return sendError(response, oauthError(QStringLiteral("invalid_token"),
                                              QStringLiteral("The token was revoked before or never given out.")));
    sendJson(response, 200, {});
}

void TokenEndpoint::userInfo(const httplib::Request& request, httplib::Response& response) {
    const auto token = bearerToken(request);
    const auto grant = token ? tokens_.grantOfAccessToken(*token) : std::nullopt;
    if (!grant) {
        response.set_header("WWW-Authenticate", "Bearer error=\"invalid_token\"");
        return sendApiError(response, 401, "authError", QStringLiteral("The access token is missing or expired."));
    }
    sendJson(response, 200, claims(*grant));
}

} // namespace quenby::localdrive
