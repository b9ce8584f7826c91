#include "oauth2/GTMOAuth2Authentication.h"

#include "http/GTMHTTPFetcherService.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/TokenRequest.h"

#include <QThread>

namespace quenby {
namespace {

constexpr std::chrono::seconds refreshMargin{60};
constexpr double maxRetryIntervalSeconds = 15.0;
constexpr char bearer[] = "Bearer ";
constexpr char authorizationHeader[] = "Authorization";

Error signedOutError() {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed,
                             QStringLiteral("The account was signed out before the request was authorized. Sign in "
                                            "and try again."));
}

Error noTokenError(const URLRequest& request) {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed,
                             QStringLiteral("There is no access token for the request. Sign in and try again."),
                             {{errorKey::request, oauth2::requestForError(request)}});
}

Error insecureRequestError(const URLRequest& request) {
    return oauth2::makeError(oauth2::ErrorCode::unauthorizableRequest,
                             QStringLiteral("The request is not https, so its access token could be read on the way. "
                                            "Use an https address."),
                             {{errorKey::request, oauth2::requestForError(request)}});
}

} // namespace

std::shared_ptr<GTMOAuth2Authentication> GTMOAuth2Authentication::authenticationWithServiceProvider(
    const QString& serviceProvider, const QUrl& tokenURL, const QString& redirectURI, const QString& clientID,
    const QString& clientSecret, std::shared_ptr<TimeSource> timeSource) {
    const std::shared_ptr<GTMOAuth2Authentication> auth(new GTMOAuth2Authentication(std::move(timeSource)),
                                                        [](GTMOAuth2Authentication* ended) {
                                                            if (ended->thread() == QThread::currentThread())
                                                                delete ended;
                                                            else
                                                                ended->deleteLater();
                                                        });
    auth->setServiceProvider(serviceProvider);
    auth->tokenURL_ = tokenURL;
    auth->redirectURI_ = redirectURI;
    auth->clientID_ = clientID;
    auth->clientSecret_ = clientSecret;
    return auth;
}

GTMOAuth2Authentication::GTMOAuth2Authentication(std::shared_ptr<TimeSource> timeSource)
    : timeSource_(std::move(timeSource))
    , inbox_(Mailbox::forContext(this))
    , assertionGrantType_(QStringLiteral("urn:ietf:params:oauth:grant-type:jwt-bearer")) {}

GTMOAuth2Authentication::~GTMOAuth2Authentication() {
    if (refreshFetcher_)
        refreshFetcher_->stopFetching();
}

// --- Authorizing requests -------------------------------------------------------------------------------------------

bool GTMOAuth2Authentication::isAuthorizedRequest(const URLRequest& request) const {
    return !request.headers.value(authorizationHeader).isEmpty();
}

CompletionTicket GTMOAuth2Authentication::authorizeRequest(const URLRequest& request, QObject* context,
                                                           AuthorizeHandler handler) {
    auto args = GTMOAuth2AuthorizationArgs::argsWithRequest(request, context, std::move(handler));
    const CompletionTicket ticket = args.completionHandler.ticket();
    if (thread() == QThread::currentThread())
        authorizeRequestArgs(std::move(args));
    else
        inbox_->post([self = shared_from_this(), args = std::move(args)] { self->authorizeRequestArgs(args); });
    return ticket;
}

bool GTMOAuth2Authentication::authorizeRequest(URLRequest& request) {
    if (shouldRefreshAccessToken() || accessToken().isEmpty() || !mayCarryToken(request))
        return false;
    request.headers.set(authorizationHeader, bearer + authorizationToken().toLatin1());
    return true;
}

void GTMOAuth2Authentication::authorizeRequestArgs(GTMOAuth2AuthorizationArgs args) {
    if (!shouldRefreshAccessToken())
        return authorizeImmediately(args);
    authorizationQueue_.push_back(std::move(args));
    if (!refreshFetcher_)
        beginRefresh();
}

void GTMOAuth2Authentication::authorizeImmediately(GTMOAuth2AuthorizationArgs& args) {
    if (!mayCarryToken(args.request)) {
        const bool isFile = args.request.url.isLocalFile();
        args.error = isFile ? MaybeError() : insecureRequestError(args.request);
    } else if (accessToken().isEmpty() || (args.error && !mayUseOldToken())) {
        args.error = args.error.value_or(noTokenError(args.request));
    } else {
        args.request.headers.set(authorizationHeader, bearer + authorizationToken().toLatin1());
        args.error.reset();
    }
    args.completionHandler.deliver(args.request, args.error);
}

bool GTMOAuth2Authentication::mayCarryToken(const URLRequest& request) const {
    return shouldAuthorizeAllRequests_ ||
           request.url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0;
}

// After a refresh that failed for the moment, a token in its last minute still does its work.
bool GTMOAuth2Authentication::mayUseOldToken() const {
    const auto remaining = lifetime_.remaining(*timeSource_);
    const bool isKnownToBeOver = remaining && *remaining <= std::chrono::milliseconds::zero();
    return lastRefreshFailure_ != RefreshFailure::refused && !isKnownToBeOver;
}

void GTMOAuth2Authentication::stopAuthorizationForRequest(const CompletionTicket& ticket) {
    ticket.cancel();
    std::erase_if(authorizationQueue_,
                  [](const GTMOAuth2AuthorizationArgs& args) { return !args.completionHandler.ticket().isPending(); });
}

void GTMOAuth2Authentication::stopAuthorization() {
    const auto queue = std::exchange(authorizationQueue_, {});
    for (const GTMOAuth2AuthorizationArgs& args : queue)
        args.completionHandler.ticket().cancel();
    stopRefreshFetcher();
}

bool GTMOAuth2Authentication::primeForRefresh(const URLRequest& refused) {
    if (refreshToken().isEmpty())
        return false;
    const QByteArray refusedHeader = refused.headers.value(authorizationHeader);
    const bool wasReplacedSince =
        !refusedHeader.isEmpty() && refusedHeader != QByteArray(bearer + authorizationToken().toLatin1());
    if (!wasReplacedSince)
        setAccessToken(QString());
    return true;
}

// --- Refreshing -----------------------------------------------------------------------------------------------------

bool GTMOAuth2Authentication::shouldRefreshAccessToken() const {
    if (!hasGrant() || accessToken().isEmpty())
        return hasGrant();
    const auto remaining = lifetime_.remaining(*timeSource_);
    return !remaining || *remaining < refreshMargin;
}

void GTMOAuth2Authentication::beginRefresh() {
    refreshFetcher_ = beginTokenFetch([this](GTMHTTPFetcher&, const MaybeError& error) { finishedRefresh(error); });
    if (!refreshFetcher_)
        finishedRefresh(Error(FetcherErrorCode::fetchCouldNotBegin,
                              {{errorKey::reason, QStringLiteral("The token request could not begin. Check the token "
                                                                 "server's address: it must be https.")}}));
}

void GTMOAuth2Authentication::finishedRefresh(const MaybeError& error) {
    refreshFetcher_.reset();
    lastRefreshFailure_ = error ? oauth2::refreshFailureOf(*error) : RefreshFailure::none;
    auto queue = std::exchange(authorizationQueue_, {});
    if (error)
        postRefreshFailed(*error);
    else
        Q_EMIT notification(kGTMOAuth2AccessTokenRefreshed, {});
    for (GTMOAuth2AuthorizationArgs& args : queue) {
        args.error = error;
        authorizeImmediately(args);
    }
}

void GTMOAuth2Authentication::postRefreshFailed(const Error& error) {
    QVariantMap userInfo;
    const QVariantMap json = error.detail(errorKey::json).toMap();
    if (!json.isEmpty())
        userInfo = {{kGTMOAuth2ErrorObjectKey, json}, {errorKey::error, json.value(errorKey::error)}};
    Q_EMIT notification(kGTMOAuth2AccessTokenRefreshFailed, userInfo);
}

void GTMOAuth2Authentication::stopRefreshFetcher() {
    const auto fetcher = std::exchange(refreshFetcher_, nullptr);
    if (!fetcher)
        return;
    fetcher->stopFetching();
    announceFetch(kGTMOAuth2FetchStopped, *fetcher);
}

// --- Token exchange -------------------------------------------------------------------------------------------------

std::shared_ptr<GTMHTTPFetcher> GTMOAuth2Authentication::beginTokenFetchWithDelegate(QObject* delegate,
                                                                                     TokenFetchSelector didFinish) {
    using Gate = CompletionGate<const std::shared_ptr<GTMOAuth2Authentication>&, const std::shared_ptr<GTMHTTPFetcher>&,
                                const MaybeError&>;
    return beginTokenFetch(
        [this, gate = Gate(delegate, std::move(didFinish))](GTMHTTPFetcher& fetcher, const MaybeError& error) {
            gate.deliver(shared_from_this(), fetcher.shared_from_this(), error);
        });
}

std::shared_ptr<GTMHTTPFetcher> GTMOAuth2Authentication::beginTokenFetch(TokenFetchDone done) {
    const std::optional<oauth2::TokenRequest> tokenRequest = oauth2::makeTokenRequest(tokenRequestInputs());
    if (!tokenRequest)
        return nullptr;
    const std::shared_ptr<GTMHTTPFetcher> fetcher = tokenFetcherFor(*tokenRequest);
    const bool began = fetcher->beginFetchWithDelegate(
        this, [this, generation = generation_, done = std::move(done)](GTMHTTPFetcher& ended, const QByteArray& data,
                                                                       const MaybeError& error) {
            announceFetch(kGTMOAuth2FetchStopped, ended);
            done(ended, generation == generation_ ? takeTokenResponse(ended, data, error) : signedOutError());
        });
    if (!began) {
        fetcher->stopFetching();
        return nullptr;
    }
    announceFetch(kGTMOAuth2FetchStarted, *fetcher);
    return fetcher;
}

oauth2::TokenRequestInputs GTMOAuth2Authentication::tokenRequestInputs() const {
    return {
        .refreshToken = refreshToken(),
        .refreshScope = refreshScope(),
        .code = code(),
        .redirectURI = redirectURI_,
        .scope = scope(),
        .assertion = assertion(),
        .assertionGrantType = assertionGrantType_,
        .clientID = clientID_,
        .clientSecret = clientSecret_,
        .additionalParameters = additionalTokenParameters_,
        .additionalGrantTypeParameters = additionalGrantTypeParameters_,
    };
}

std::shared_ptr<GTMHTTPFetcher>
GTMOAuth2Authentication::tokenFetcherFor(const oauth2::TokenRequest& tokenRequest) const {
    URLRequest request(tokenURL_);
    request.httpMethod = QByteArrayLiteral("POST");
    request.headers.set(QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/x-www-form-urlencoded"));
    // With 401, a token server asks for another client, and says in the body why (RFC 6749, section 5.2).
    request.takesLogin = false;
    const auto fetcher = fetcherForOwnRequest(request);
    // Never queued: the fetchers that hold a host's places may be the ones that wait for this token.
    fetcher->setService(nullptr);
    fetcher->setPostData(oauth2::encodedQueryParametersForDictionary(tokenRequest.fields).toUtf8());
    fetcher->setComment(QStringLiteral("GTMOAuth2 %1 fetch to %2 %3")
                            .arg(tokenRequest.fetchType, tokenURL_.host(), accountForComment()));
    fetcher->setProperty(kGTMOAuth2FetchTypeKey, tokenRequest.fetchType);
    fetcher->setRetryEnabled(true);
    fetcher->setMaxRetryInterval(maxRetryIntervalSeconds);
    return fetcher;
}

MaybeError GTMOAuth2Authentication::takeTokenResponse(const GTMHTTPFetcher& fetcher, const QByteArray& data,
                                                      const MaybeError& error) {
    const bool isSigningIn = fetcher.propertyForKey(kGTMOAuth2FetchTypeKey) == kGTMOAuth2FetchTypeToken;
    const auto explained = [&](const Error& plain) {
        return oauth2::explainedTokenError(plain, serviceProvider(), isSigningIn);
    };
    if (error)
        return explained(oauth2::withServerJSON(*error, data));
    const auto response =
        oauth2::parseTokenResponse(fetcher.responseHeaders().value(QByteArrayLiteral("Content-Type")), data);
    if (!response)
        return explained(response.error());
    setKeysForResponseDictionary(*response);
    return std::nullopt;
}

std::shared_ptr<GTMHTTPFetcher> GTMOAuth2Authentication::fetcherForOwnRequest(const URLRequest& request) const {
    URLRequest own = request;
    if (!userAgent_.isEmpty())
        own.headers.set(QByteArrayLiteral("User-Agent"), userAgent_);
    const auto service = fetcherService();
    const auto fetcher = service ? service->fetcherWithRequest(own) : GTMHTTPFetcher::fetcherWithRequest(own);
    if (!service)
        fetcher->setTimeSource(timeSource_);
    fetcher->setAuthorizer(nullptr);
    fetcher->setDelegateQueue(nullptr);
    if (shouldAuthorizeAllRequests_)
        fetcher->setAllowLocalhostRequest(true);
    return fetcher;
}

void GTMOAuth2Authentication::announceFetch(const QString& notificationName, GTMHTTPFetcher& fetcher) {
    Q_EMIT notification(notificationName, {{kGTMOAuth2FetcherKey, QVariant::fromValue<QObject*>(&fetcher)},
                                           {kGTMOAuth2FetchTypeKey, fetcher.propertyForKey(kGTMOAuth2FetchTypeKey)}});
}

// --- Responses ------------------------------------------------------------------------------------------------------

void GTMOAuth2Authentication::setKeysForResponseDictionary(const QVariantMap& response) {
    const QString oldRefreshToken = refreshToken();
    merge(response);
    const auto holds = [&response](const char* key) { return response.contains(QLatin1String(key)); };
    if (holds("access_token") || holds("code") || holds("expires_in"))
        updateExpirationDate();
    if (refreshToken() != oldRefreshToken) {
        lastRefreshFailure_ = RefreshFailure::none;
        Q_EMIT notification(kGTMOAuth2RefreshTokenChanged, {});
    }
}

void GTMOAuth2Authentication::setExpiresIn(const std::optional<qint64>& seconds) {
    storeExpiresIn(seconds);
    updateExpirationDate();
}

void GTMOAuth2Authentication::updateExpirationDate() {
    lifetime_.start(std::chrono::seconds(expiresIn().value_or(0)), *timeSource_);
}

void GTMOAuth2Authentication::setKeysForResponseString(const QString& response) {
    setKeysForResponseDictionary(oauth2::toVariantMap(oauth2::dictionaryWithResponseString(response)));
}

void GTMOAuth2Authentication::setKeysForResponseJSONData(const QByteArray& data) {
    if (const auto response = oauth2::dictionaryWithJSONData(data))
        setKeysForResponseDictionary(*response);
}

void GTMOAuth2Authentication::reset() {
    ++generation_;
    clear();
    lifetime_.clear();
    if (refreshFetcher_) {
        stopRefreshFetcher();
        finishedRefresh(signedOutError());
    }
    lastRefreshFailure_ = RefreshFailure::none;
}

void GTMOAuth2Authentication::setProperty(const QString& key, const QVariant& value) {
    if (value.isValid())
        properties_.insert(key, value);
    else
        properties_.remove(key);
}

QString GTMOAuth2Authentication::accountForComment() const {
    const QString email = userEmail();
    return email.isEmpty() ? QString() : QString(QStringLiteral("for \"") + email + QLatin1Char('"'));
}

QString GTMOAuth2Authentication::description() const {
    const auto presence = [](const QString& secret) {
        return secret.isEmpty() ? QStringLiteral("none") : QStringLiteral("present");
    };
    const auto date = expirationDate();
    return QStringLiteral("GTMOAuth2Authentication: provider %1, account %2, access token %3, refresh token %4, "
                          "code %5, expires %6")
        .arg(serviceProvider(), userEmail(), presence(accessToken()), presence(refreshToken()), presence(code()),
             date ? date->toString(Qt::ISODate) : QStringLiteral("unknown"));
}

} // namespace quenby
