#include "http/CurlTransfer.h"

#include "http/CurlErrors.h"
#include "http/CurlEventLoop.h"
#include "http/Redirect.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr int maxRedirects = 20;
// The body of a response that is not delivered is read up to here, to keep the connection; beyond, a new one is
// cheaper.
constexpr qint64 maxDiscardedBytes = 256 * 1024;

Error cannotRewind() {
    return Error(URLErrorCode::requestBodyUnreadable,
                 {{errorKey::reason, QStringLiteral("The data to send cannot be read again from its start.")}});
}

bool isSameServer(const QUrl& one, const QUrl& other) {
    return one.scheme() == other.scheme() && one.host() == other.host() && one.port() == other.port();
}

} // namespace

CurlTransfer::CurlTransfer(const URLRequest& request, URLConnectionClient& client, std::shared_ptr<CurlEventLoop> loop,
                           std::shared_ptr<ProxySource> proxySource)
    : loop_(std::move(loop))
    , proxySource_(std::move(proxySource))
    , easy_(curl_easy_init())
    , client_(&client)
    , request_(request)
    , body_(request)
    , stallWatch_(
          request.timeout, [this] { return loop_->unacknowledgedBytes(*this); }, [this] { stalled(); })
    , sendPace_([this] { loop_->resumeSending(*this); }) {}

CurlTransfer::~CurlTransfer() = default;

void CurlTransfer::cancel() {
    client_ = nullptr;
    proxyQuestion_.cancel();
    stallWatch_.stop();
    loop_->remove(shared_from_this());
}

void CurlTransfer::beginExchange() {
    if (isProxyKnown())
        runExchange();
    else
        findProxy();
}

// --- The way there ------------------------------------------------------------------------------------------------

bool CurlTransfer::isProxyKnown() const { return !proxySource_ || isSameServer(proxyIsFor_, request_.url); }

void CurlTransfer::findProxy() {
    stallWatch_.start();
    proxyQuestion_ =
        proxySource_->findProxies(request_.url, loop_.get(), [transfer = weak_from_this()](const ProxyChoice& choice) {
            if (const auto self = transfer.lock())
                self->useProxy(choice);
        });
}

void CurlTransfer::useProxy(const ProxyChoice& choice) {
    stallWatch_.stop();
    const QUrl former = std::exchange(proxy_, choice.proxies.value(0));
    proxyIsFor_ = request_.url;
    if (proxy_ != former) {
        proxyLogin_.reset();
        if (!proxy_.userName().isEmpty())
            proxyLogin_ = Login{{proxy_.userName(QUrl::FullyDecoded), proxy_.password(QUrl::FullyDecoded)}};
    }
    runExchange();
}

QString CurlTransfer::proxyName() const {
    return proxy_.isEmpty() ? QString() : proxy_.authority(QUrl::FullyEncoded).section(QLatin1Char('@'), -1);
}

void CurlTransfer::runExchange() {
    head_ = ResponseHead();
    bodyUse_ = BodyUse::deliver;
    discardedBytes_ = 0;
    bytesSent_ = 0;
    isAwaitingAnswer_ = false;
    isResponseDelivered_ = false;
    isResponseDeferred_ = false;
    goesOn_ = false;
    configure();
    stallWatch_.start();
    loop_->add(shared_from_this());
}

// --- Sending ------------------------------------------------------------------------------------------------------

bool CurlTransfer::isRepeatable() const {
    const QByteArray method = request_.effectiveMethod();
    return !request_.hasBody() && (method == "GET" || method == "HEAD" || method == "OPTIONS");
}

// Called for every request that libcurl is about to send. On a reused connection that died before a byte came back it
// sends the same request once more (RFC 9112, section 9.3.1 allows that for safe requests only). A dead connection on
// which nothing could be sent is no harm; otherwise the server may have acted on what it got.
int CurlTransfer::requestWillBegin() {
    long sentSoFar = 0;
    curl_easy_getinfo(handle(), CURLINFO_REQUEST_SIZE, &sentSoFar);
    if (isAwaitingAnswer_ && sentSoFar > 0 && !isRepeatable()) {
        failure_ = Error(URLErrorCode::networkConnectionLost,
                         {{errorKey::reason, QStringLiteral("The connection to %1 was lost before it answered. Whether "
                                                            "it has done what was asked is not known.")
                                                 .arg(request_.url.host())}});
        return CURL_PREREQFUNC_ABORT;
    }
    isAwaitingAnswer_ = true;
    return CURL_PREREQFUNC_OK;
}

size_t CurlTransfer::readBody(char* buffer, size_t size) {
    stallWatch_.noteProgress();
    const qint64 allowed = sendPace_.take(static_cast<qint64>(size));
    if (allowed == 0)
        return CURL_READFUNC_PAUSE;
    const qint64 got = body_.read(buffer, allowed);
    if (got >= 0)
        return static_cast<size_t>(got);
    // Aborting closes the connection, so that what has been sent cannot pass for a complete request.
    failure_ = Error(URLErrorCode::requestBodyUnreadable, {{errorKey::reason, body_.failure()}});
    return CURL_READFUNC_ABORT;
}

int CurlTransfer::seekBody(curl_off_t offset, int origin) {
    if (origin == SEEK_SET && body_.seek(offset))
        return CURL_SEEKFUNC_OK;
    failure_ = cannotRewind();
    return CURL_SEEKFUNC_FAIL;
}

int CurlTransfer::progressed(curl_off_t bytesSent) {
    if (bytesSent != bytesSent_)
        reportBytesSent(bytesSent);
    return 0;
}

void CurlTransfer::reportBytesSent(qint64 sent) {
    const qint64 total = std::min(sent, body_.offset()); // libcurl counts the framing of chunks too
    const qint64 more = total - std::exchange(bytesSent_, total);
    if (more <= 0)
        return; // libcurl has begun again, within a login
    stallWatch_.noteProgress();
    if (client_ && !isResponseDelivered_)
        client_->connectionDidSendBodyData(more, total, body_.length());
}

// --- Receiving ----------------------------------------------------------------------------------------------------

size_t CurlTransfer::receiveHeaderLine(QByteArrayView line) {
    stallWatch_.noteProgress();
    isAwaitingAnswer_ = false;
    isResponseDeferred_ = false;
    if (head_.addLine(line) == ResponseHead::Progress::complete && !head_.isInterim())
        headIsComplete();
    return client_ && !failure_ ? static_cast<size_t>(line.size()) : 0;
}

HTTPResponse CurlTransfer::response() const {
    HTTPResponse response;
    response.url = request_.url;
    response.statusCode = head_.statusCode();
    response.headers = head_.headers();
    return response;
}

void CurlTransfer::headIsComplete() {
    const HTTPResponse received = response();
    const auto challenge = passwordChallenge(received);
    if (challenge && (challenge->challenge.isProxy || request_.takesLogin)) {
        // A digest login takes two requests, of which libcurl makes the second by itself when it can.
        const auto& login = challenge->challenge.isProxy ? proxyLogin_ : serverLogin_;
        if (login && login->scheme == ChallengeScheme::digest)
            isResponseDeferred_ = true;
        else
            answerChallenge(*challenge);
        return;
    }
    if (const auto redirected = redirectedRequest(request_, received)) {
        if (++redirects_ > maxRedirects) {
            failure_ = Error(URLErrorCode::httpTooManyRedirects,
                             {{errorKey::reason,
                               QStringLiteral("%1 redirects without end. Try again later.").arg(request_.url.host())}});
            return;
        }
        const auto next = client_->connectionWillSendRequest(*redirected, received);
        if (!client_)
            return;
        if (next) {
            if (!isSameServer(next->url, request_.url))
                serverLogin_.reset(); // it was given for this one alone
            request_ = *next;
            goesOn_ = true;
            bodyUse_ = BodyUse::discard;
            return;
        }
    }
    deliverResponse(received);
}

// Asks the client; whether it has a credential to try.
bool CurlTransfer::answerChallenge(const PasswordChallenge& received) {
    AuthenticationChallenge challenge = received.challenge;
    if (challenge.isProxy && tryProxyAddressAgain(received.scheme))
        return true;
    if (challenge.isProxy && !proxy_.isEmpty())
        challenge.host = proxyName();
    auto& login = challenge.isProxy ? proxyLogin_ : serverLogin_;
    challenge.previousFailureCount = login ? std::max(login->attempts, 1) : 0;
    const auto credential = client_->connectionDidReceiveChallenge(challenge);
    if (!client_)
        return false;
    if (!credential) {
        failure_ = Error(URLErrorCode::cancelled,
                         {{errorKey::reason, QStringLiteral("The login at %1 was given up.").arg(challenge.host)}});
        return false;
    }
    login = Login{*credential, received.scheme, challenge.previousFailureCount + 1};
    goesOn_ = true;
    bodyUse_ = BodyUse::discard;
    return true;
}

// What stands in the proxy's address was presented in the simplest way; the proxy may want it in another.
bool CurlTransfer::tryProxyAddressAgain(ChallengeScheme scheme) {
    if (!proxyLogin_ || proxyLogin_->attempts > 0 || scheme == ChallengeScheme::basic)
        return false;
    proxyLogin_->scheme = scheme;
    proxyLogin_->attempts = 1;
    goesOn_ = true;
    bodyUse_ = BodyUse::discard;
    return true;
}

void CurlTransfer::deliverResponse(const HTTPResponse& received) {
    curl_off_t sent = 0;
    curl_easy_getinfo(handle(), CURLINFO_SIZE_UPLOAD_T, &sent);
    reportBytesSent(sent);
    if (!client_)
        return;
    isResponseDelivered_ = true;
    client_->connectionDidReceiveResponse(received);
}

size_t CurlTransfer::receiveBody(QByteArrayView data) {
    stallWatch_.noteProgress();
    const auto taken = static_cast<size_t>(data.size());
    if (std::exchange(isResponseDeferred_, false))
        answerChallenge(*passwordChallenge(response())); // libcurl had no answer to it
    if (!client_ || failure_)
        return 0;
    if (bodyUse_ == BodyUse::discard) {
        discardedBytes_ += data.size();
        return discardedBytes_ <= maxDiscardedBytes ? taken : 0;
    }
    if (!client_->connectionDidReceiveData(data)) {
        failure_ = Error(URLErrorCode::cancelled,
                         {{errorKey::reason,
                           QStringLiteral("The data received from %1 could not be taken.").arg(request_.url.host())}});
        return 0;
    }
    return client_ ? taken : 0;
}

// --- Ending -------------------------------------------------------------------------------------------------------

void CurlTransfer::exchangeDidEnd(CURLcode code) {
    stallWatch_.stop();
    if (!client_)
        return;
    if (std::exchange(isResponseDeferred_, false) && !failure_)
        answerChallenge(*passwordChallenge(response()));
    const MaybeError error = errorOfEndedExchange(code);
    if (!client_)
        return;
    if (goesOn_ && !failure_) {
        if (!request_.hasBody())
            body_ = RequestBody(request_); // a redirect has dropped it
        if (body_.seek(0))
            beginExchange();
        else
            fail(cannotRewind());
        return;
    }
    if (error)
        fail(*error);
    else
        finish();
}

// May find that the exchange is to be made again.
MaybeError CurlTransfer::errorOfEndedExchange(CURLcode code) {
    if (failure_)
        return failure_;
    if (code == CURLE_OK) {
        if (isResponseDelivered_ || goesOn_)
            return std::nullopt;
        return errorForCurlCode(CURLE_GOT_NOTHING, {}, request_.url.host()); // not all of a head, that is
    }
    long tunnelStatus = 0; // a proxy's answer to CONNECT never reaches the header callback
    curl_easy_getinfo(handle(), CURLINFO_HTTP_CONNECTCODE, &tunnelStatus);
    if (tunnelStatus == 407 && !goesOn_) {
        AuthenticationChallenge challenge;
        challenge.host = request_.url.host();
        challenge.isProxy = true;
        answerChallenge({ChallengeScheme::basicOrDigest, challenge}); // which of them is not known either
        return failure_;
    }
    if (tunnelStatus >= 400 && tunnelStatus <= 405)
        code = CURLE_PROXY; // it would answer the same again
    // A request has gone out on a kept connection, which broke; the code is of a new one that libcurl has tried since.
    if (code == CURLE_COULDNT_CONNECT && isAwaitingAnswer_)
        code = CURLE_GOT_NOTHING;
    return errorForCurlCode(code, QString::fromUtf8(errorText_.data()), request_.url.host(), proxyName());
}

void CurlTransfer::stalled() {
    loop_->remove(shared_from_this());
    const auto seconds = static_cast<double>(request_.timeout.count()) / 1000;
    const QString what = proxyQuestion_.isPending()
                             ? QStringLiteral("the system has not said for %1 s which proxy to use").arg(seconds)
                             : QStringLiteral("no byte for %1 s").arg(seconds);
    proxyQuestion_.cancel();
    fail(errorForCurlCode(CURLE_OPERATION_TIMEDOUT, what, request_.url.host()));
}

void CurlTransfer::fail(const Error& error) {
    if (auto* client = std::exchange(client_, nullptr))
        client->connectionDidFailWithError(error);
}

void CurlTransfer::finish() {
    if (auto* client = std::exchange(client_, nullptr))
        client->connectionDidFinishLoading();
}

} // namespace quenby
