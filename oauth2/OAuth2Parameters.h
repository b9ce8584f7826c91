// One account's credentials as the dictionary in which they arrive from servers, and typed access to its keys.
// Setting an empty text removes the key. A plain value without a thread or a clock of its own.
#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

namespace quenby {

class OAuth2Parameters {
public:
    const QVariantMap& parameters() const { return parameters_; }

    QString accessToken() const;
    void setAccessToken(const QString& token);
    QString refreshToken() const;
    void setRefreshToken(const QString& token);
    QString code() const;
    void setCode(const QString& code);
    QString assertion() const;
    void setAssertion(const QString& assertion);
    QString refreshScope() const; // the scope to send with a refresh
    void setRefreshScope(const QString& scope);
    QString errorString() const; // the provider's error code from the authorization answer
    void setErrorString(const QString& error);
    QString tokenType() const;
    void setTokenType(const QString& type);
    QString scope() const;
    void setScope(const QString& scope);
    QString userID() const;
    void setUserID(const QString& userID);
    QString userEmail() const;
    void setUserEmail(const QString& email);
    QString userEmailIsVerified() const; // "true", "false" or empty
    void setUserEmailIsVerified(const QString& isVerified);
    QString serviceProvider() const;
    void setServiceProvider(const QString& provider);

    // Whole seconds; a number that came as text counts, what is below 1 or no number at all does not.
    std::optional<qint64> expiresIn() const;

    // Whether a new access token can be had from what is here.
    bool hasGrant() const { return !refreshToken().isEmpty() || !code().isEmpty() || !assertion().isEmpty(); }
    // Whether requests can be authorized, now or after a refresh. A code alone is not enough: it works once.
    bool canAuthorize() const {
        return !refreshToken().isEmpty() || !accessToken().isEmpty() || !assertion().isEmpty();
    }

    // What a later run needs, form-encoded, and nothing else: no client secret, no code.
    QString persistenceResponseString() const;

protected:
    // Takes over every key of a server's answer, except values of the wrong type under the keys above and empty
    // tokens, which must not wipe out what is stored. An answer with a token or code forgets the old expiresIn.
    void merge(const QVariantMap& response);
    void clear() { parameters_.clear(); }
    void storeExpiresIn(const std::optional<qint64>& seconds);
    ~OAuth2Parameters() = default;

private:
    QString text(const QString& key) const;
    void setText(const QString& key, const QString& value);

    QVariantMap parameters_;
};

} // namespace quenby
