// POST /o/oauth2/token, /o/oauth2/revoke and GET /oauth2/v3/userinfo (RFC 6749 sections 3.2, 4.1.3, 6; RFC 7009).
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/oauth/TokenStore.h"

#include <QHash>
#include <QJsonObject>

namespace quenby::localdrive {

// Threads: any.
class TokenEndpoint {
public:
    // Which programs may come: pinned ids with their secrets, and unless `only` is set others with any secret. A pinned
    // id without a secret is a public client (RFC 6749, section 2.1), which proves itself by a code challenge.
    struct Clients {
        QHash<QString, QString> pinned;
        bool only = false;
    };

    TokenEndpoint(TokenStore& tokens, Clients clients, const ServerClock& clock, QUrl issuer, Statistics& statistics);

    void addRoutes(HttpServer& server);

    // The JSON of a successful token answer. `clientSecret` signs the identity token.
    QJsonObject tokenAnswer(const IssuedTokens& tokens, const QByteArray& clientSecret) const;

private:
    struct Client {
        QString id;
        QByteArray secret;
        bool isPublic = false;
    };

    void token(const httplib::Request& request, httplib::Response& response);
    void revoke(const httplib::Request& request, httplib::Response& response);
    void userInfo(const httplib::Request& request, httplib::Response& response);

    Result<Client> authenticate(const httplib::Request& request) const;
    Result<IssuedTokens> issue(const httplib::Request& request, const Client& client);
    QByteArray identityToken(const Grant& grant, const QByteArray& clientSecret) const;

    TokenStore& tokens_;
    const Clients clients_;
    const ServerClock& clock_;
    const QUrl issuer_;
    Statistics& statistics_;
};

} // namespace quenby::localdrive
