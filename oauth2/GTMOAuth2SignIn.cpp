#include "oauth2/GTMOAuth2SignIn.h"

#include "http/GTMHTTPFetcherService.h"
#include "oauth2/AuthorizationRequest.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/ProofKey.h"
#include "oauth2/TokenRequest.h"
#include "oauth2/UserInfo.h"

namespace quenby {
namespace {

constexpr double maxRetryIntervalSeconds = 15.0;
constexpr int tokenFetchCouldNotBegin = -1; // of errorDomain::httpStatus

Error windowClosedError() {
    return oauth2::makeError(oauth2::ErrorCode::windowClosed,
                             QStringLiteral("The sign-in window was closed before the sign-in was finished."));
}

Error providerRefusedError(const QString& providerError) {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed,
                             QStringLiteral("The provider answered the sign-in without a code. Sign in again."),
                             {{errorKey::error, providerError}});
}

Error otherStateError() {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed,
                             QStringLiteral("The answer belongs to another sign-in and was not used. Sign in again."));
}

Error tokenFetchError() {
    return Error(errorDomain::httpStatus, tokenFetchCouldNotBegin,
                 {{errorKey::reason, QStringLiteral("The token request could not begin. Check the token server's "
                                                    "address: it must be https.")}});
}

Error unreadableUserInfoError() {
    return Error(errorDomain::json, static_cast<qint64>(JSONErrorCode::malformed),
                 {{errorKey::reason, QStringLiteral("The provider's answer about the user is not the JSON object that "
                                                    "it should be. Sign in again.")}});
}

} // namespace

QString GTMOAuth2SignIn::nativeClientRedirectURI() { return oauth2::nativeClientRedirectURI; }
QString GTMOAuth2SignIn::serviceProviderName() { return QStringLiteral("Google"); }

std::shared_ptr<GTMOAuth2Authentication>
GTMOAuth2SignIn::standardGoogleAuthenticationForScope(const QString& scope, const QString& clientID,
                                                      const QString& clientSecret, const Endpoints& endpoints,
                                                      std::shared_ptr<TimeSource> timeSource) {
    const auto auth = GTMOAuth2Authentication::authenticationWithServiceProvider(
        serviceProviderName(), endpoints.tokenURL, nativeClientRedirectURI(), clientID, clientSecret,
        std::move(timeSource));
    auth->setScope(scope);
    auth->setAssertionGrantType(endpoints.jwtBearerGrantType);
    auth->setShouldAuthorizeAllRequests(endpoints.isLocal);
    return auth;
}

GTMOAuth2SignIn::GTMOAuth2SignIn(std::shared_ptr<GTMOAuth2Authentication> authentication, const QUrl& authorizationURL,
                                 QObject* delegate, WebRequestSelector webRequestSelector,
                                 FinishedSelector finishedSelector, SignInEnvironment environment)
    : authentication_(std::move(authentication))
    , authorizationURL_(authorizationURL)
    , delegate_(delegate)
    , webRequestSelector_(std::move(webRequestSelector))
    , endpoints_(std::move(environment.endpoints))
    , finished_(delegate,
                [self = QPointer(this), finishedSelector = std::move(finishedSelector)](const MaybeError& error) {
                    if (self && finishedSelector)
                        finishedSelector(*self, self->authentication_, error);
                })
    , networkLossWatch_(
          std::move(environment.reachability), std::move(environment.timeSource),
          [this] { Q_EMIT notification(kGTMOAuthNetworkLost); }, [this] { Q_EMIT notification(kGTMOAuthNetworkFound); })
    , shouldFetchGoogleUserEmail_(oauth2::isHostInDomain(authorizationURL.host(), endpoints_.providerDomain)) {}

GTMOAuth2SignIn::~GTMOAuth2SignIn() {
    finished_.ticket().cancel();
    if (pendingFetcher_)
        pendingFetcher_->stopFetching();
}

// --- The page -------------------------------------------------------------------------------------------------------

bool GTMOAuth2SignIn::startSigningIn() {
    addScopeForGoogleUserInfo();
    return startWebRequest();
}

void GTMOAuth2SignIn::addScopeForGoogleUserInfo() {
    const auto add = [this](const QString& wanted) {
        const QString scope = authentication_->scope();
        if (!scope.contains(wanted))
            authentication_->setScope(oauth2::scopeWithStrings({scope, wanted}));
    };
    if (shouldFetchGoogleUserEmail_)
        add(endpoints_.emailScope);
    if (shouldFetchGoogleUserProfile_)
        add(endpoints_.profileScope);
}

void GTMOAuth2SignIn::addProofKey() {
    if (codeVerifier_.isEmpty())
        codeVerifier_ = oauth2::makeCodeVerifier();
    additionalParameters_.insert(QStringLiteral("code_challenge"), oauth2::codeChallengeForVerifier(codeVerifier_));
    additionalParameters_.insert(QStringLiteral("code_challenge_method"), QStringLiteral("S256"));
    auto byGrantType = authentication_->additionalGrantTypeRequestParameters();
    byGrantType[oauth2::grantTypeAuthorizationCode].insert(QStringLiteral("code_verifier"), codeVerifier_);
    authentication_->setAdditionalGrantTypeRequestParameters(byGrantType);
}

oauth2::FormFields GTMOAuth2SignIn::parametersForWebRequest() const {
    oauth2::FormFields fields{
        {QStringLiteral("response_type"), QStringLiteral("code")},
        {QStringLiteral("client_id"), authentication_->clientID()},
        {QStringLiteral("scope"), authentication_->scope()},
        {QStringLiteral("redirect_uri"), authentication_->redirectURI()},
    };
    if (!state_.isEmpty())
        fields.insert(QStringLiteral("state"), state_);
    fields.insert(additionalParameters_);
    return fields;
}

bool GTMOAuth2SignIn::startWebRequest() {
    if (authentication_->clientID().isEmpty() || authentication_->redirectURI().isEmpty())
        return false;
    if (usesPKCE_)
        addProofKey();
    const QString query = oauth2::encodedQueryParametersForDictionary(parametersForWebRequest());
    showPage(oauth2::mutableURLRequestWithURL(authorizationURL_, query));
    networkLossWatch_.start(authorizationURL_.host(), networkLossTimeoutInterval_);
    return true;
}

void GTMOAuth2SignIn::showPage(const std::optional<URLRequest>& request) {
    if (delegate_ && webRequestSelector_)
        webRequestSelector_(*this, request);
}

void GTMOAuth2SignIn::closeTheWindow() {
    networkLossWatch_.stop();
    showPage(std::nullopt);
}

void GTMOAuth2SignIn::windowWasClosed() {
    networkLossWatch_.stop();
    if (!std::exchange(hasHandledCallback_, true)) // a title that arrives late starts nothing
        finishSignInWithError(windowClosedError());
}

void GTMOAuth2SignIn::cancelSigningIn() {
    hasHandledCallback_ = true;
    finished_.ticket().cancel();
    if (const auto fetcher = std::exchange(pendingFetcher_, nullptr)) {
        fetcher->stopFetching();
        authentication_->announceFetch(kGTMOAuth2FetchStopped, *fetcher);
    }
    authentication_->stopAuthorization();
    closeTheWindow();
}

// --- The provider's answer ------------------------------------------------------------------------------------------

bool GTMOAuth2SignIn::requestRedirectedToRequest(const URLRequest& redirectedRequest) {
    if (!oauth2::isRedirectTo(redirectedRequest.url, authentication_->redirectURI()))
        return false;
    return takeAnswer(oauth2::answerInRedirect(redirectedRequest.url));
}

bool GTMOAuth2SignIn::titleChanged(const QString& title) {
    if (authentication_->redirectURI() != nativeClientRedirectURI())
        return false;
    const oauth2::FormFields answer = oauth2::answerInTitle(title);
    return !answer.isEmpty() && takeAnswer(answer);
}

bool GTMOAuth2SignIn::loadFailedWithError(const Error& error) {
    const QUrl failingURL = error.detail(errorKey::failingURL).toUrl();
    if (!oauth2::isRedirectTo(failingURL, authentication_->redirectURI()))
        return false;
    if (!std::exchange(hasHandledCallback_, true)) {
        closeTheWindow();
        finishSignInWithError(error);
    }
    return true;
}

bool GTMOAuth2SignIn::takeAnswer(const oauth2::FormFields& answer) {
    if (hasHandledCallback_)
        return true;
    if (!state_.isEmpty() && answer.value(QStringLiteral("state")) != state_) {
        hasHandledCallback_ = true;
        closeTheWindow();
        finishSignInWithError(otherStateError());
        return true;
    }
    authentication_->setKeysForResponseDictionary(oauth2::toVariantMap(answer));
    authCodeObtained();
    return true;
}

void GTMOAuth2SignIn::authCodeObtained() {
    hasHandledCallback_ = true;
    if (webRequestSelector_)
        closeTheWindow();
    else
        addScopeForGoogleUserInfo();
    if (authentication_->code().isEmpty())
        finishSignInWithError(providerRefusedError(authentication_->errorString()));
    else
        beginTokenFetch();
}

// --- The exchange ---------------------------------------------------------------------------------------------------

void GTMOAuth2SignIn::beginTokenFetch() {
    pendingFetcher_ = authentication_->beginTokenFetchWithDelegate(
        this, [this](const auto&, const auto&, const MaybeError& error) { authFinishedWithFetcher(error); });
    if (!pendingFetcher_)
        return finishSignInWithError(tokenFetchError());
    Q_EMIT notification(kGTMOAuth2UserSignedIn);
}

void GTMOAuth2SignIn::authFinishedWithFetcher(const MaybeError& error) {
    pendingFetcher_.reset();
    const bool wantsUserInfo = (shouldFetchGoogleUserEmail_ || shouldFetchGoogleUserProfile_) &&
                               authentication_->serviceProvider() == serviceProviderName();
    if (error || !wantsUserInfo)
        finishSignInWithError(error);
    else
        fetchGoogleUserInfo();
}

void GTMOAuth2SignIn::fetchGoogleUserInfo() {
    if (!shouldFetchGoogleUserProfile_ && takeUserInfoFromIDToken())
        return finishSignInWithError(std::nullopt);
    pendingFetcher_ = userInfoFetcherWithAuth(authentication_, endpoints_);
    pendingFetcher_->beginFetchWithDelegate(
        this, [this](GTMHTTPFetcher& fetcher, const QByteArray& data, const MaybeError& error) {
            userInfoFetcherFinished(fetcher, data, error);
        });
    authentication_->announceFetch(kGTMOAuth2FetchStarted, *pendingFetcher_);
}

bool GTMOAuth2SignIn::takeUserInfoFromIDToken() {
    const QString idToken = authentication_->parameters().value(QStringLiteral("id_token")).toString();
    const std::optional<oauth2::UserInfo> info = oauth2::userInfoFromIDToken(idToken);
    if (info)
        updateGoogleUserInfo(*info);
    return info.has_value();
}

void GTMOAuth2SignIn::userInfoFetcherFinished(GTMHTTPFetcher& fetcher, const QByteArray& data,
                                              const MaybeError& error) {
    pendingFetcher_.reset();
    authentication_->announceFetch(kGTMOAuth2FetchStopped, fetcher);
    if (error)
        return finishSignInWithError(error);
    const std::optional<oauth2::UserInfo> info = oauth2::userInfoFromJSON(data);
    if (!info)
        return finishSignInWithError(unreadableUserInfoError());
    updateGoogleUserInfo(*info);
    finishSignInWithError(std::nullopt);
}

void GTMOAuth2SignIn::updateGoogleUserInfo(const oauth2::UserInfo& info) {
    userProfile_ = info.profile;
    authentication_->setUserID(info.userID);
    authentication_->setUserEmail(info.email);
    authentication_->setUserEmailIsVerified(info.emailIsVerified);
}

void GTMOAuth2SignIn::finishSignInWithError(const MaybeError& error) { finished_.deliver(error); }

// --- Without a sign-in ----------------------------------------------------------------------------------------------

std::shared_ptr<GTMHTTPFetcher>
GTMOAuth2SignIn::userInfoFetcherWithAuth(const std::shared_ptr<GTMOAuth2Authentication>& auth,
                                         const Endpoints& endpoints) {
    URLRequest request(endpoints.userInfoURL);
    request.headers.set(QByteArrayLiteral("Cache-Control"), QByteArrayLiteral("no-cache"));
    const auto fetcher = auth->fetcherForOwnRequest(request);
    fetcher->setAuthorizer(auth);
    fetcher->setRetryEnabled(true);
    fetcher->setMaxRetryInterval(maxRetryIntervalSeconds);
    fetcher->setComment(QStringLiteral("GTMOAuth2 user info %1").arg(auth->accountForComment()));
    fetcher->setProperty(kGTMOAuth2FetchTypeKey, kGTMOAuth2FetchTypeUserInfo);
    return fetcher;
}

void GTMOAuth2SignIn::revokeTokenForGoogleAuthentication(GTMOAuth2Authentication& auth, const Endpoints& endpoints) {
    if (!auth.refreshToken().isEmpty() && auth.canAuthorize() && auth.serviceProvider() == serviceProviderName()) {
        URLRequest request(endpoints.revocationURL);
        request.httpMethod = QByteArrayLiteral("POST");
        request.headers.set(QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/x-www-form-urlencoded"));
        const auto fetcher = auth.fetcherForOwnRequest(request);
        fetcher->setPostData("token=" + oauth2::encodedOAuthValueForString(auth.refreshToken()).toLatin1());
        fetcher->setComment(QStringLiteral("GTMOAuth2 revoke token for %1").arg(auth.userEmail()));
        fetcher->beginFetchWithCompletionHandler(nullptr, {});
    }
    auth.reset();
}

} // namespace quenby
