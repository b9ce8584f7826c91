// Authorization codes, tokens and web sessions in the database. Secrets are kept as SHA-256 digests only, so that
// whoever reads the file can't use them.
#pragma once

#include "core/Result.h"
#include "localdrive/server/ServerClock.h"
#include "localdrive/store/Account.h"
#include "localdrive/store/Session.h"

#include <chrono>
#include <optional>

namespace quenby::localdrive {

// What a person allowed a program.
struct Grant {
    QString clientId;
    Account user;
    QString scope; // separated by blanks
};

// What a code is bound to besides the grant.
struct CodeBinding {
    QString redirectUri;
    QByteArray codeChallenge; // RFC 7636, method S256; empty: none
};

struct IssuedTokens {
    QByteArray accessToken;
    QByteArray refreshToken; // empty when a refresh token was shown to get these
    std::chrono::seconds lifetime{0};
    Grant grant;
};

// Errors are oauthError()s. Threads: any.
class TokenStore {
public:
    static Result<std::unique_ptr<TokenStore>> open(Database& database, const ServerClock& clock,
                                                    std::chrono::seconds accessLifetime);

    // A code for ten minutes and one use.
    Result<QByteArray> issueCode(const Grant& grant, const CodeBinding& binding);
    // A code that comes back a second time has leaked: then everything it led to is revoked (RFC 6749, 4.1.2).
    // `needsChallenge`: of clients that have nothing else to prove who they are; a code without one is no good to them.
    Result<IssuedTokens> redeemCode(const QByteArray& code, const QString& clientId, const QString& redirectUri,
                                    const QByteArray& codeVerifier, bool needsChallenge);
    Result<IssuedTokens> refresh(const QByteArray& refreshToken, const QString& clientId);
    // Tokens without a code, for tests.
    Result<IssuedTokens> issueDirectly(const Grant& grant);

    // Revokes the grant behind an access or refresh token, with all of its tokens. False when there is no such token.
    Result<bool> revoke(const QByteArray& token);

    // Nothing when the token is unknown, expired or revoked.
    std::optional<Grant> grantOfAccessToken(const QByteArray& token);
    std::optional<Grant> grantOfRefreshToken(const QByteArray& token);

    Result<QByteArray> openWebSession(const Account& user);
    std::optional<Account> userOfWebSession(const QByteArray& session);
    Result<void> closeWebSession(const QByteArray& session);

    Result<void> expireAccessTokens();
    Result<void> revokeEverything();

private:
    TokenStore(Database& database, const ServerClock& clock, std::chrono::seconds accessLifetime);

    qint64 now() const { return clock_.now().toMSecsSinceEpoch(); }
    qint64 insertGrant(Session& session, const Grant& grant) const;
    QByteArray insertToken(Session& session, qint64 grant, const QString& kind, std::optional<qint64> expires) const;
    IssuedTokens insertTokens(Session& session, qint64 grant, const Grant& facts, bool withRefresh) const;
    std::optional<Grant> validGrant(const QByteArray& token, const QString& kind);

    Database& database_;
    const ServerClock& clock_;
    const std::chrono::seconds accessLifetime_;
};

} // namespace quenby::localdrive
