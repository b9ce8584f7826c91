#include "localdrive/server/oauth/TokenStore.h"

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/oauth/OAuthError.h"

#include <QCryptographicHash>

namespace quenby::localdrive {
namespace {

using namespace std::chrono_literals;

constexpr auto codeLifetime = 10min;
constexpr auto webSessionLifetime = 30 * 24h;

const QString accessKind = QStringLiteral("access");
const QString refreshKind = QStringLiteral("refresh");
const QString webKind = QStringLiteral("web");

constexpr auto base64url = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

QStringList schema() {
    return {
        QStringLiteral("CREATE TABLE oauth_grants (id INTEGER PRIMARY KEY, client TEXT NOT NULL, email TEXT NOT NULL, "
                       "name TEXT NOT NULL, scope TEXT NOT NULL, revoked INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE TABLE oauth_tokens (digest TEXT PRIMARY KEY, grant_id INTEGER NOT NULL, "
                       "kind TEXT NOT NULL, expires INTEGER) WITHOUT ROWID"),
        QStringLiteral("CREATE TABLE oauth_codes (digest TEXT PRIMARY KEY, grant_id INTEGER NOT NULL, "
                       "redirect_uri TEXT NOT NULL, challenge TEXT NOT NULL, expires INTEGER NOT NULL, "
                       "used INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID"),
    };
}

QString digest(const QByteArray& secret) {
    return QString::fromLatin1(QCryptographicHash::hash(secret, QCryptographicHash::Sha256).toHex());
}

bool verifies(const QByteArray& verifier, const QByteArray& challenge) {
    return equalSecrets(QCryptographicHash::hash(verifier, QCryptographicHash::Sha256).toBase64(base64url), challenge);
}

// The columns client, email, name and scope from the given one on.
Grant grantFrom(const Row& row, qsizetype first) {
    return {row[first].toString(), Account{row[first + 2].toString(), row[first + 1].toString()},
            row[first + 3].toString()};
}

qint64 milliseconds(std::chrono::milliseconds duration) { return duration.count(); }

} // namespace

Result<std::unique_ptr<TokenStore>> TokenStore::open(Database& database, const ServerClock& clock,
                                                     std::chrono::seconds accessLifetime) {
    if (const auto migrated = database.migrate(QStringLiteral("oauth"), schema()); !migrated)
        return migrated.error();
    return std::unique_ptr<TokenStore>(new TokenStore(database, clock, accessLifetime));
}

TokenStore::TokenStore(Database& database, const ServerClock& clock, std::chrono::seconds accessLifetime)
    : database_(database)
    , clock_(clock)
    , accessLifetime_(accessLifetime) {}

qint64 TokenStore::insertGrant(Session& session, const Grant& grant) const {
    session.run(QStringLiteral("INSERT INTO oauth_grants (client, email, name, scope) VALUES (?, ?, ?, ?)"),
                {grant.clientId, grant.user.emailAddress, grant.user.displayName, grant.scope});
    return session.value(QStringLiteral("SELECT last_insert_rowid()")).toLongLong();
}

QByteArray TokenStore::insertToken(Session& session, qint64 grant, const QString& kind,
                                   std::optional<qint64> expires) const {
    QByteArray token = randomSecret();
    session.run(QStringLiteral("INSERT INTO oauth_tokens (digest, grant_id, kind, expires) VALUES (?, ?, ?, ?)"),
                {digest(token), grant, kind, expires ? QVariant(*expires) : QVariant()});
    return token;
}

IssuedTokens TokenStore::insertTokens(Session& session, qint64 grant, const Grant& facts, bool withRefresh) const {
    session.run(QStringLiteral("DELETE FROM oauth_tokens WHERE expires <= ?"), {now()});
    return {insertToken(session, grant, accessKind, now() + milliseconds(accessLifetime_)),
            withRefresh ? insertToken(session, grant, refreshKind, std::nullopt) : QByteArray(), accessLifetime_,
            facts};
}

Result<QByteArray> TokenStore::issueCode(const Grant& grant, const CodeBinding& binding) {
    Session session(database_, Session::Kind::write);
    const QByteArray code = randomSecret();
    const qint64 id = insertGrant(session, grant);
    session.run(QStringLiteral("INSERT INTO oauth_codes (digest, grant_id, redirect_uri, challenge, expires) "
                               "VALUES (?, ?, ?, ?, ?)"),
                {digest(code), id, binding.redirectUri, QString::fromLatin1(binding.codeChallenge),
                 now() + milliseconds(codeLifetime)});
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return code;
}

Result<IssuedTokens> TokenStore::redeemCode(const QByteArray& code, const QString& clientId, const QString& redirectUri,
                                            const QByteArray& codeVerifier, bool needsChallenge) {
    Session session(database_, Session::Kind::write);
    const Row row = session.row(
        QStringLiteral("SELECT grant_id, redirect_uri, challenge, codes.expires, used, client, email, name, scope "
                       "FROM oauth_codes AS codes JOIN oauth_grants AS grants ON grants.id = grant_id "
                       "WHERE digest = ?"),
        {digest(code)});
    if (session.failure())
        return *session.failure();
    if (row.isEmpty())
        return invalidGrant(QStringLiteral("The code is unknown. Sign in again."));
    const qint64 grant = row[0].toLongLong();
    if (row[4].toBool()) {
        session.run(QStringLiteral("UPDATE oauth_grants SET revoked = 1 WHERE id = ?"), {grant});
        if (const auto committed = session.commit(); !committed)
            return committed.error();
        return invalidGrant(QStringLiteral("The code was used before. Sign in again."));
    }
    const Grant facts = grantFrom(row, 5);
    if (row[3].toLongLong() <= now())
        return invalidGrant(QStringLiteral("The code has expired. Sign in again."));
    if (facts.clientId != clientId || row[1].toString() != redirectUri)
        return invalidGrant(QStringLiteral("The code was given to another client or redirect address."));
    const QByteArray challenge = row[2].toString().toLatin1();
    if (challenge.isEmpty() && needsChallenge)
        return invalidGrant(QStringLiteral("The code was asked for without a challenge, which this client must send."));
    if (!challenge.isEmpty() && !verifies(codeVerifier, challenge))
        return invalidGrant(QStringLiteral("The code verifier does not match the challenge."));

    session.run(QStringLiteral("UPDATE oauth_codes SET used = 1 WHERE digest = ?"), {digest(code)});
    IssuedTokens tokens = insertTokens(session, grant, facts, true);
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return tokens;
}

Result<IssuedTokens> TokenStore::refresh(const QByteArray& refreshToken, const QString& clientId) {
    Session session(database_, Session::Kind::write);
    const Row row = session.row(QStringLiteral("SELECT grant_id, client, email, name, scope FROM oauth_tokens "
                                               "JOIN oauth_grants AS grants ON grants.id = grant_id "
                                               "WHERE digest = ? AND kind = ? AND revoked = 0"),
                                {digest(refreshToken), refreshKind});
    if (session.failure())
        return *session.failure();
    if (row.isEmpty() || row[1].toString() != clientId)
        return invalidGrant(QStringLiteral("The refresh token was revoked or never given out. Sign in again."));
    IssuedTokens tokens = insertTokens(session, row[0].toLongLong(), grantFrom(row, 1), false);
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return tokens;
}

Result<IssuedTokens> TokenStore::issueDirectly(const Grant& grant) {
    Session session(database_, Session::Kind::write);
    IssuedTokens tokens = insertTokens(session, insertGrant(session, grant), grant, true);
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return tokens;
}

Result<bool> TokenStore::revoke(const QByteArray& token) {
    Session session(database_, Session::Kind::write);
    const qint64 changed =
        session.run(QStringLiteral("UPDATE oauth_grants SET revoked = 1 WHERE id = "
                                   "(SELECT grant_id FROM oauth_tokens WHERE digest = ?) AND revoked = 0"),
                    {digest(token)});
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return changed > 0;
}

std::optional<Grant> TokenStore::validGrant(const QByteArray& token, const QString& kind) {
    Session session(database_, Session::Kind::read);
    const Row row = session.row(QStringLiteral("SELECT client, email, name, scope FROM oauth_tokens AS tokens "
                                               "JOIN oauth_grants AS grants ON grants.id = grant_id "
                                               "WHERE digest = ? AND kind = ? AND revoked = 0 "
                                               "AND (tokens.expires IS NULL OR tokens.expires > ?)"),
                                {digest(token), kind, now()});
    return row.isEmpty() ? std::nullopt : std::optional(grantFrom(row, 0));
}

std::optional<Grant> TokenStore::grantOfAccessToken(const QByteArray& token) { return validGrant(token, accessKind); }

std::optional<Grant> TokenStore::grantOfRefreshToken(const QByteArray& token) { return validGrant(token, refreshKind); }

Result<QByteArray> TokenStore::openWebSession(const Account& user) {
    Session session(database_, Session::Kind::write);
    const qint64 grant = insertGrant(session, {webKind, user, {}});
    QByteArray token = insertToken(session, grant, webKind, now() + milliseconds(webSessionLifetime));
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return token;
}

std::optional<Account> TokenStore::userOfWebSession(const QByteArray& session) {
    const auto grant = session.isEmpty() ? std::nullopt : validGrant(session, webKind);
    return grant ? std::optional(grant->user) : std::nullopt;
}

Result<void> TokenStore::closeWebSession(const QByteArray& webSession) {
    Session session(database_, Session::Kind::write);
    session.run(QStringLiteral("DELETE FROM oauth_tokens WHERE digest = ? AND kind = ?"),
                {digest(webSession), webKind});
    return session.commit();
}

Result<void> TokenStore::expireAccessTokens() {
    Session session(database_, Session::Kind::write);
    session.run(QStringLiteral("DELETE FROM oauth_tokens WHERE kind = ?"), {accessKind});
    return session.commit();
}

Result<void> TokenStore::revokeEverything() {
    Session session(database_, Session::Kind::write);
    session.run(QStringLiteral("UPDATE oauth_grants SET revoked = 1"));
    return session.commit();
}

} // namespace quenby::localdrive
