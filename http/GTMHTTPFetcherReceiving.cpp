// GTMHTTPFetcher: what the connection reports while an attempt runs.
#include "http/GTMHTTPFetcher.h"

#include "core/Redaction.h"
#include "http/FetchAttempt.h"
#include "http/GTMCookieStorage.h"
#include "http/GTMHTTPFetchHistory.h"
#include "http/HTTPLog.h"
#include "http/SetCookieParser.h"
#include "http/StatusText.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr int notModified = 304;
constexpr int lastSuccess = 299;
// Room is made in advance for what the server announces, up to here; an announcement costs the server nothing.
constexpr qint64 maxReserve = 16 * 1024 * 1024;

// Only http may become https. Any other change of the scheme is undone, so that no redirect can lead a secure request
// into the clear or to another protocol.
QUrl keepingScheme(const QUrl& current, const QUrl& redirected) {
    if (current.scheme() == QLatin1String("http") && redirected.scheme() == QLatin1String("https"))
        return redirected;
    QUrl url = redirected;
    url.setScheme(current.scheme());
    return url;
}

bool describesContent(const QByteArray& name) { return name.startsWith("content-") || name == "transfer-encoding"; }

// Authorization and the caller's own cookies were meant for the host that they were given for: another one, to which
// a hijacked or careless server may send us, must not learn them. Fields about the body go with the body.
bool isCopiedOnRedirect(const QByteArray& name, bool isOtherHost, bool hasBody) {
    const QByteArray lower = name.toLower();
    if (isOtherHost && (lower == "authorization" || lower == "cookie"))
        return false;
    return hasBody || !describesContent(lower);
}

} // namespace

std::optional<URLRequest> GTMHTTPFetcher::connectionWillSendRequest(const URLRequest& redirected,
                                                                    const HTTPResponse& redirectResponse) {
    URLRequest next = redirected;
    next.url = keepingScheme(request_.url, redirected.url);
    const bool isOtherHost = next.url.host().compare(request_.url.host(), Qt::CaseInsensitive) != 0;
    for (const auto& [name, value] : request_.headers) {
        if (isCopiedOnRedirect(name, isOtherHost, next.hasBody() || !request_.hasBody()))
            next.headers.set(name, value);
    }
    if (isOtherHost)
        authorizer_ = nullptr; // a retry begins at the new address, and must not be authorized for it
    storeCookies(redirectResponse);
    request_ = next;
    addCookies(next);
    attempt_.write().wireRequest = next;
    qCDebug(httpLog, "redirected to %s", qUtf8Printable(requestDescription()));
    return next;
}

std::optional<Credential> GTMHTTPFetcher::connectionDidReceiveChallenge(const AuthenticationChallenge& challenge) {
    constexpr int maxFailures = 3;
    const auto& credential = challenge.isProxy ? settings().proxyCredential : settings().credential;
    if (challenge.previousFailureCount < maxFailures && credential && !credential->isEmpty())
        return credential;
    const QString who = challenge.isProxy ? QStringLiteral("The proxy ") : QStringLiteral("The server ");
    const QString reason = who + challenge.host +
                           (challenge.previousFailureCount > 0
                                ? QStringLiteral(" refused the user name and password. Check them.")
                                : QStringLiteral(" asks for a user name and a password, and none are set."));
    // What the connection says about being given up does not matter any more.
    attempt_.write().connectionError =
        Error(FetcherErrorCode::authenticationChallengeFailed,
              {{errorKey::challenge, QVariant::fromValue(challenge)}, {errorKey::reason, reason}});
    return std::nullopt;
}

void GTMHTTPFetcher::connectionDidSendBodyData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) {
    requestDidSendData(bytes, totalBytes, totalBytesExpected);
}

void GTMHTTPFetcher::connectionDidReceiveResponse(const HTTPResponse& response) {
    reply_.write() = {response, QByteArray(), 0};
    storeCookies(response);
    if (attempt_->downloadFile) {
        FetchAttempt& attempt = attempt_.write();
        attempt.connectionError = attempt.downloadFile->truncate();
    } else {
        const qint64 announced = response.headers.value("Content-Length").toLongLong();
        reply_.write().data.reserve(std::clamp(announced, qint64(0), maxReserve));
    }
}

// The body of an error answer is kept in memory even when the answer was to go into a file: it tells what went wrong.
bool GTMHTTPFetcher::writesToFile() const { return attempt_->downloadFile && statusCode() <= lastSuccess; }

bool GTMHTTPFetcher::connectionDidReceiveData(QByteArrayView data) {
    FetchAttempt& attempt = attempt_.write();
    if (attempt.connectionError)
        return false;
    Reply& reply = reply_.write();
    if (writesToFile())
        attempt.connectionError = attempt.downloadFile->write(data);
    else
        reply.data.append(data);
    if (attempt.connectionError)
        return false;
    reply.length += data.size();
    if (hooks_->receivedDataSelector || hooks_->receivedDataBlock) {
        // Copied: one of them may stop the fetch, which releases them.
        runCallback([self = shared_from_this(), selector = hooks_->receivedDataSelector,
                     block = hooks_->receivedDataBlock, received = reply.data] {
            if (selector)
                selector(*self, received);
            if (block)
                block(received);
        });
    }
    return true;
}

void GTMHTTPFetcher::connectionDidFinishLoading() {
    const auto self = shared_from_this();
    FetchAttempt& attempt = attempt_.write();
    MaybeError error = attempt.connectionError;
    if (!error)
        error = updateFetchHistory();
    if (!error && statusCode() > lastSuccess)
        error = statusError();
    if (!error && attempt.downloadFile) {
        error = attempt.downloadFile->moveIntoPlace();
        if (!error)
            attempt.downloadFile = nullptr;
    }
    if (error)
        attemptDidFail(*error);
    else
        attemptDidEnd(std::nullopt, false);
}

void GTMHTTPFetcher::connectionDidFailWithError(const Error& error) {
    if (!attempt_->connection)
        return;
    const auto self = shared_from_this();
    Reply& reply = reply_.write();
    reply.data = QByteArray(); // a failed connection delivers no part of a body
    reply.response.reset();
    attemptDidFail(attempt_->connectionError.value_or(error));
}

// Remembers the answer, or answers a 304 with what is remembered.
MaybeError GTMHTTPFetcher::updateFetchHistory() {
    const auto& history = settings().fetchHistory;
    const URLRequest& asked = attempt_->wireRequest;
    if (!history || !response())
        return std::nullopt;
    if (statusCode() == notModified) {
        if (history->shouldCacheETaggedData()) {
            const QByteArray cached = history->cachedDataForRequest(asked);
            if (!cached.isNull())
                return useCachedData(cached);
        }
        return std::nullopt;
    }
    if (attempt_->downloadFile)
        history->removeCachedDataForRequest(asked);
    else
        history->updateFetchHistoryWithRequest(asked, *response(), downloadedData());
    return std::nullopt;
}

MaybeError GTMHTTPFetcher::useCachedData(const QByteArray& data) {
    qCDebug(httpLog, "not modified, the remembered data is used");
    Reply& reply = reply_.write();
    reply.response->statusCode = 200;
    reply.length = data.size();
    if (attempt_->downloadFile)
        return attempt_->downloadFile->write(data);
    reply.data = data;
    return std::nullopt;
}

Error GTMHTTPFetcher::statusError() const {
    const QString request = requestDescription();
    const QString reason = QStringLiteral("The server answered %1 to %2").arg(statusText(statusCode()), request);
    QVariantMap details{{errorKey::reason, reason}, {errorKey::request, request}};
    if (!downloadedData().isEmpty())
        details.insert(errorKey::data, downloadedData());
    return Error(errorDomain::httpStatus, statusCode(), details);
}

QString GTMHTTPFetcher::shownAddress() const {
    return isURLSecret_ ? redaction::secretURL(request_.url) : redaction::url(request_.url);
}

QString GTMHTTPFetcher::requestDescription() const {
    const QByteArray method = request_.httpMethod.isEmpty() ? QByteArray("GET") : request_.httpMethod;
    return QString::fromLatin1(method) + QLatin1Char(' ') + shownAddress();
}

void GTMHTTPFetcher::storeCookies(const HTTPResponse& response) {
    const auto storage = cookieStorage();
    if (!storage)
        return;
    const auto cookies = parseSetCookieFields(response.headers, response.url, timeSource()->now());
    if (!cookies.isEmpty())
        storage->setCookies(cookies);
}

void GTMHTTPFetcher::addCookies(URLRequest& request) const {
    const auto storage = cookieStorage();
    if (!storage)
        return;
    const QByteArray stored = storage->cookieHeaderForURL(request.url);
    if (stored.isEmpty())
        return;
    const QByteArray own = request.headers.value("Cookie");
    request.headers.set("Cookie", own.isEmpty() ? stored : QByteArray(own + "; " + stored));
}

} // namespace quenby
