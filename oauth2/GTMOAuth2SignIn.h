// One run of the authorization-code flow of an installed application (RFC 6749, section 4.1; RFC 8252): asks for the
// provider's page to be shown, recognises the answer in what the page does, exchanges the code for tokens, asks who
// signed in, and reports once. It knows no window: the delegate owns the page, loads what webRequestSelector gives it
// and reports the page's redirects, titles and failures.
//
// Threads: one, which runs an event loop. Ownership: the delegate owns the sign-in and outlives it; it must not
// destroy it from inside webRequestSelector. Destroying it cancels it.
//
// Errors (through finishedSelector): ErrorCode::windowClosed; ErrorCode::authorizationFailed with the provider's
// error name under errorKey::error; errorDomain::httpStatus -1 when the token fetch could not begin; or the error of
// the page, the token fetch or the user-info fetch.
#pragma once

#include "core/Endpoints.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/HostReachability.h"
#include "oauth2/NetworkLossWatch.h"

#include <QPointer>

#include <chrono>

namespace quenby {

class GTMCookieStorage;

namespace oauth2 {
struct UserInfo;
} // namespace oauth2

// What every sign-in takes from its surroundings.
struct SignInEnvironment {
    Endpoints endpoints;
    std::shared_ptr<TimeSource> timeSource;
    std::shared_ptr<HostReachability> reachability;
};

class GTMOAuth2SignIn : public QObject {
    Q_OBJECT

public:
    // A request to load, or nothing: close the page. Called on the sign-in's thread from inside its functions.
    using WebRequestSelector = std::function<void(GTMOAuth2SignIn& signIn, const std::optional<URLRequest>& request)>;
    // Called once, through the event loop.
    using FinishedSelector =
        std::function<void(GTMOAuth2SignIn& signIn, const std::shared_ptr<GTMOAuth2Authentication>& authentication,
                           const MaybeError& error)>;

    static QString nativeClientRedirectURI();
    static QString serviceProviderName();

    // The authorizer that an installed application signs in with, for the provider or the local Drive.
    static std::shared_ptr<GTMOAuth2Authentication>
    standardGoogleAuthenticationForScope(const QString& scope, const QString& clientID, const QString& clientSecret,
                                         const Endpoints& endpoints,
                                         std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource());

    GTMOAuth2SignIn(std::shared_ptr<GTMOAuth2Authentication> authentication, const QUrl& authorizationURL,
                    QObject* delegate, WebRequestSelector webRequestSelector, FinishedSelector finishedSelector,
                    SignInEnvironment environment);
    ~GTMOAuth2SignIn() override;

    // --- Running --------------------------------------------------------------------------------------------------

    // Whether there was what a sign-in needs: a client id and a redirect URI.
    bool startSigningIn();
    // Ends without a callback and asks to close the page.
    void cancelSigningIn();
    void closeTheWindow();
    // The user closed the page. Nothing after an answer: then the page closes because it has done its work.
    void windowWasClosed();

    // --- What the page does: whether it was the provider's answer -------------------------------------------------

    // The page must not load a redirect that was handled.
    virtual bool requestRedirectedToRequest(const URLRequest& redirectedRequest);
    virtual bool titleChanged(const QString& title);
    virtual bool loadFailedWithError(const Error& error);
    // For sign-ins whose provider answers in a cookie; this one does not look.
    virtual void cookiesChanged(const GTMCookieStorage&) {}

    // --- Settings, before startSigningIn() ------------------------------------------------------------------------

    std::shared_ptr<GTMOAuth2Authentication> authentication() const { return authentication_; }
    const QUrl& authorizationURL() const { return authorizationURL_; }
    // They win over the sign-in's own parameters of the same name.
    void setAdditionalAuthorizationParameters(const oauth2::FormFields& fields) { additionalParameters_ = fields; }
    const oauth2::FormFields& additionalAuthorizationParameters() const { return additionalParameters_; }
    // On from the start when the authorization URL lies in the provider's own domain.
    void setShouldFetchGoogleUserEmail(bool should) { shouldFetchGoogleUserEmail_ = should; }
    bool shouldFetchGoogleUserEmail() const { return shouldFetchGoogleUserEmail_; }
    void setShouldFetchGoogleUserProfile(bool should) { shouldFetchGoogleUserProfile_ = should; }
    bool shouldFetchGoogleUserProfile() const { return shouldFetchGoogleUserProfile_; }
    // Sent along; an answer with another state is refused. Empty: none.
    void setState(const QString& state) { state_ = state; }
    // Proof key for code exchange (RFC 7636), off at the start; a verifier is made when none is set.
    void setUsesPKCE(bool uses) { usesPKCE_ = uses; }
    void setCodeVerifier(const QString& verifier) { codeVerifier_ = verifier; }
    // How long the network may be gone before kGTMOAuthNetworkLost is posted; 0 watches nothing.
    void setNetworkLossTimeoutInterval(std::chrono::milliseconds interval) { networkLossTimeoutInterval_ = interval; }
    std::chrono::milliseconds networkLossTimeoutInterval() const { return networkLossTimeoutInterval_; }
    // The application's own; the sign-in does not look at it.
    void setUserData(const QVariant& userData) { userData_ = userData; }
    const QVariant& userData() const { return userData_; }

    // --- State ----------------------------------------------------------------------------------------------------

    bool hasHandledCallback() const { return hasHandledCallback_; }
    bool hasNotifiedNetworkLoss() const { return networkLossWatch_.hasNotifiedNetworkLoss(); }
    std::shared_ptr<GTMHTTPFetcher> pendingFetcher() const { return pendingFetcher_; }
    const QVariantMap& userProfile() const { return userProfile_; }

    // --- Without a sign-in ----------------------------------------------------------------------------------------

    // Tells the provider to forget the refresh token, without waiting for the answer, and resets the authorizer.
    static void revokeTokenForGoogleAuthentication(GTMOAuth2Authentication& auth, const Endpoints& endpoints);
    // Not yet begun.
    static std::shared_ptr<GTMHTTPFetcher> userInfoFetcherWithAuth(const std::shared_ptr<GTMOAuth2Authentication>& auth,
                                                                   const Endpoints& endpoints);

Q_SIGNALS:
    void notification(const QString& name);

private:
    void addScopeForGoogleUserInfo();
    void addProofKey();
    oauth2::FormFields parametersForWebRequest() const;
    bool startWebRequest();
    void showPage(const std::optional<URLRequest>& request);

    bool takeAnswer(const oauth2::FormFields& answer);
    void authCodeObtained();
    void beginTokenFetch();
    void authFinishedWithFetcher(const MaybeError& error);
    void fetchGoogleUserInfo();
    bool takeUserInfoFromIDToken();
    void userInfoFetcherFinished(GTMHTTPFetcher& fetcher, const QByteArray& data, const MaybeError& error);
    void updateGoogleUserInfo(const oauth2::UserInfo& info);
    void finishSignInWithError(const MaybeError& error);

    const std::shared_ptr<GTMOAuth2Authentication> authentication_;
    const QUrl authorizationURL_;
    const QPointer<QObject> delegate_;
    const WebRequestSelector webRequestSelector_;
    const Endpoints endpoints_;
    const CompletionGate<const MaybeError&> finished_;
    NetworkLossWatch networkLossWatch_;
    oauth2::FormFields additionalParameters_;
    bool shouldFetchGoogleUserEmail_ = false;
    bool shouldFetchGoogleUserProfile_ = false;
    QString state_;
    bool usesPKCE_ = false;
    QString codeVerifier_;
    std::chrono::milliseconds networkLossTimeoutInterval_{std::chrono::seconds(30)};
    bool hasHandledCallback_ = false;
    std::shared_ptr<GTMHTTPFetcher> pendingFetcher_;
    QVariantMap userProfile_;
    QVariant userData_;
};

} // namespace quenby
