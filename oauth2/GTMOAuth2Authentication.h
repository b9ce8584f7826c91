// One account's OAuth 2.0 credentials, and the authorizer of its requests: adds the bearer token, renews it at the
// token server when it is missing or has less than 60 seconds to live, and lets the requests that arrive meanwhile
// wait for that one renewal.
//
// Threads: it lives on the thread that made it, which runs an event loop; everything is called there, except
// isAuthorizedRequest() and authorizeRequest(request, context, handler), which any thread may call. Callbacks come on
// their context's thread, in the order of the requests. The last reference may be dropped on any thread.
//
// Errors: domain errorDomain::oauth2 with the codes of OAuth2Error.h, or the error of the token fetch. No error text,
// description or log of this class holds a token, code, assertion or client secret.
#pragma once

#include "core/Mailbox.h"
#include "core/TimeSource.h"
#include "http/Authorizer.h"
#include "oauth2/GTMOAuth2AuthorizationArgs.h"
#include "oauth2/OAuth2Encoding.h"
#include "oauth2/OAuth2Notifications.h"
#include "oauth2/OAuth2Parameters.h"
#include "oauth2/TokenLifetime.h"
#include "oauth2/TokenResponse.h"

#include <QObject>
#include <QUrl>

#include <deque>
#include <memory>

namespace quenby {

class GTMHTTPFetcher;
class GTMHTTPFetcherService;

namespace oauth2 {
struct TokenRequest;
struct TokenRequestInputs;
} // namespace oauth2

class GTMOAuth2Authentication final : public QObject,
                                      public Authorizer,
                                      public OAuth2Parameters,
                                      public std::enable_shared_from_this<GTMOAuth2Authentication> {
    Q_OBJECT

public:
    // The fetcher has ended; it tells about the exchange.
    using TokenFetchSelector =
        std::function<void(const std::shared_ptr<GTMOAuth2Authentication>& auth,
                           const std::shared_ptr<GTMHTTPFetcher>& fetcher, const MaybeError& error)>;

    static std::shared_ptr<GTMOAuth2Authentication>
    authenticationWithServiceProvider(const QString& serviceProvider, const QUrl& tokenURL, const QString& redirectURI,
                                      const QString& clientID, const QString& clientSecret,
                                      std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource());
    ~GTMOAuth2Authentication() override;

    // --- Authorizing requests -------------------------------------------------------------------------------------

    bool isAuthorizedRequest(const URLRequest& request) const override;
    CompletionTicket authorizeRequest(const URLRequest& request, QObject* context, AuthorizeHandler handler) override;
    // At once: adds the header if there is a token that needs no renewal; whether it did.
    bool authorizeRequest(URLRequest& request);
    bool isAuthorizingRequest(const CompletionTicket& ticket) const { return ticket.isPending(); }
    // The request is not answered any more. A renewal that runs goes on: its token is good for the next request.
    void stopAuthorizationForRequest(const CompletionTicket& ticket);
    // Ends the renewal; no waiting request is answered.
    void stopAuthorization();
    bool primeForRefresh(const URLRequest& refused) override;
    QString userEmail() const override { return OAuth2Parameters::userEmail(); }

    // --- Tokens ---------------------------------------------------------------------------------------------------

    // Whether the access token is missing or has less than 60 seconds to live, and a new one can be had.
    bool shouldRefreshAccessToken() const;
    QString authorizationToken() const { return accessToken(); }
    std::optional<QDateTime> expirationDate() const { return lifetime_.expirationDate(); }
    void setExpirationDate(const std::optional<QDateTime>& date) { lifetime_.setExpirationDate(date, *timeSource_); }
    // Seconds from now; also sets the expiration date.
    void setExpiresIn(const std::optional<qint64>& seconds);
    // After a refused refresh only a new sign-in helps; after a momentary failure the credentials are as good as
    // before.
    RefreshFailure lastRefreshFailure() const { return lastRefreshFailure_; }
    std::shared_ptr<GTMHTTPFetcher> refreshFetcher() const { return refreshFetcher_; }

    // Exchanges what is at hand (refresh token, else code, else assertion) for an access token. Null when there is
    // nothing to exchange or the fetch could not begin, and then nothing is called back. An answer that arrives after
    // reset() is not taken over.
    std::shared_ptr<GTMHTTPFetcher> beginTokenFetchWithDelegate(QObject* delegate, TokenFetchSelector didFinish);

    // Forgets everything that came from the user or a server. Waiting requests are answered with an error.
    void reset();

    void setKeysForResponseDictionary(const QVariantMap& response);
    void setKeysForResponseString(const QString& response); // form-encoded; reads persistenceResponseString() back
    void setKeysForResponseJSONData(const QByteArray& data);

    // --- Settings -------------------------------------------------------------------------------------------------

    const QString& clientID() const { return clientID_; }
    void setClientID(const QString& clientID) { clientID_ = clientID; }
    const QString& clientSecret() const { return clientSecret_; }
    void setClientSecret(const QString& clientSecret) { clientSecret_ = clientSecret; }
    const QString& redirectURI() const { return redirectURI_; }
    void setRedirectURI(const QString& redirectURI) { redirectURI_ = redirectURI; }
    const QUrl& tokenURL() const { return tokenURL_; }
    void setTokenURL(const QUrl& tokenURL) { tokenURL_ = tokenURL; }
    // The grant type of an assertion; that of RFC 7523 at the start.
    void setAssertionGrantType(const QString& grantType) { assertionGrantType_ = grantType; }
    const QByteArray& userAgent() const { return userAgent_; }
    void setUserAgent(const QByteArray& userAgent) { userAgent_ = userAgent; }
    // Also over plain http, and the account's own fetches to this computer too: for the local Drive.
    bool shouldAuthorizeAllRequests() const { return shouldAuthorizeAllRequests_; }
    void setShouldAuthorizeAllRequests(bool should) { shouldAuthorizeAllRequests_ = should; }
    // Makes the account's own fetchers and lends them its settings. May be the service whose requests are authorized
    // here: it is not owned, and token fetches don't wait for a place in its queue.
    void setFetcherService(const std::shared_ptr<GTMHTTPFetcherService>& service) { fetcherService_ = service; }
    std::shared_ptr<GTMHTTPFetcherService> fetcherService() const { return fetcherService_.lock(); }
    void setAdditionalTokenRequestParameters(const oauth2::FormFields& fields) { additionalTokenParameters_ = fields; }
    const oauth2::FormFields& additionalTokenRequestParameters() const { return additionalTokenParameters_; }
    void setAdditionalGrantTypeRequestParameters(const QMap<QString, oauth2::FormFields>& fields) {
        additionalGrantTypeParameters_ = fields;
    }
    const QMap<QString, oauth2::FormFields>& additionalGrantTypeRequestParameters() const {
        return additionalGrantTypeParameters_;
    }
    void setProperty(const QString& key, const QVariant& value); // an invalid value removes the key
    QVariant propertyForKey(const QString& key) const { return properties_.value(key); }

    // One line without secrets, for logs.
    QString description() const;
    // `for "address"`, or nothing without one: how the comments of fetches name the account.
    QString accountForComment() const;

    // --- For the sign-in, which fetches on the account's behalf ---------------------------------------------------

    // Made by fetcherService() when there is one; without an authorizer, with callbacks on their contexts' threads.
    std::shared_ptr<GTMHTTPFetcher> fetcherForOwnRequest(const URLRequest& request) const;
    // Posts kGTMOAuth2FetchStarted or kGTMOAuth2FetchStopped. The fetch type is the fetcher's property of that key.
    void announceFetch(const QString& notificationName, GTMHTTPFetcher& fetcher);

Q_SIGNALS:
    void notification(const QString& name, const QVariantMap& userInfo);

private:
    using TokenFetchDone = std::function<void(GTMHTTPFetcher& fetcher, const MaybeError& error)>;

    explicit GTMOAuth2Authentication(std::shared_ptr<TimeSource> timeSource);

    void authorizeRequestArgs(GTMOAuth2AuthorizationArgs args);
    void authorizeImmediately(GTMOAuth2AuthorizationArgs& args);
    bool mayCarryToken(const URLRequest& request) const;
    bool mayUseOldToken() const;

    void updateExpirationDate();
    void beginRefresh();
    void finishedRefresh(const MaybeError& error);
    void postRefreshFailed(const Error& error);
    void stopRefreshFetcher();

    std::shared_ptr<GTMHTTPFetcher> beginTokenFetch(TokenFetchDone done);
    oauth2::TokenRequestInputs tokenRequestInputs() const;
    std::shared_ptr<GTMHTTPFetcher> tokenFetcherFor(const oauth2::TokenRequest& tokenRequest) const;
    MaybeError takeTokenResponse(const GTMHTTPFetcher& fetcher, const QByteArray& data, const MaybeError& error);

    const std::shared_ptr<TimeSource> timeSource_;
    const std::shared_ptr<Mailbox> inbox_; // requests of other threads
    TokenLifetime lifetime_;
    QString clientID_;
    QString clientSecret_;
    QString redirectURI_;
    QUrl tokenURL_;
    QString assertionGrantType_;
    QByteArray userAgent_;
    bool shouldAuthorizeAllRequests_ = false;
    std::weak_ptr<GTMHTTPFetcherService> fetcherService_;
    oauth2::FormFields additionalTokenParameters_;
    QMap<QString, oauth2::FormFields> additionalGrantTypeParameters_;
    QVariantMap properties_;

    std::deque<GTMOAuth2AuthorizationArgs> authorizationQueue_; // waits for refreshFetcher_
    std::shared_ptr<GTMHTTPFetcher> refreshFetcher_;
    RefreshFailure lastRefreshFailure_ = RefreshFailure::none;
    quint64 generation_ = 0; // counts resets: an answer of an older generation belongs to a user who has gone
};

} // namespace quenby
