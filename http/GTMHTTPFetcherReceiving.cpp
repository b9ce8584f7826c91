// GTMHTTPFetcher: what the connection reports while an attempt runs.
#include "http/GTMHTTPFetcher.h"

#include "core/Redaction.h"
#include "http/DownloadFile.h"
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
    wireRequest_ = next;
    qCDebug(httpLog, "redirected to %s", qUtf8Printable(requestDescription()));
    return next;
}

std::optional<Credential> GTMHTTPFetcher::connectionDidReceiveChallenge(const AuthenticationChallenge& challenge) {
    constexpr int maxFailures = 3;
    const auto& credential = challenge.isProxy ? proxyCredential_ : credential_;
    if (challenge.previousFailureCount < maxFailures && credential && !credential->isEmpty())
        return credential;
    const QString who = challenge.isProxy ? QStringLiteral("The proxy ") : QStringLiteral("The server ");
    const QString reason = who + challenge.host +
                           (challenge.previousFailureCount > 0
                                ? QStringLiteral(" refused the user name and password. Check them.")
                                : QStringLiteral(" asks for a user name and a password, and none are set."));
    // What the connection says about being given up does not matter any more.
    connectionError_ = Error(FetcherErrorCode::authenticationChallengeFailed,
                             {{errorKey::challenge, QVariant::fromValue(challenge)}, {errorKey::reason, reason}});
    return std::nullopt;
}

void GTMHTTPFetcher::connectionDidSendBodyData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) {
    requestDidSendData(bytes, totalBytes, totalBytesExpected);
}

void GTMHTTPFetcher::connectionDidReceiveResponse(const HTTPResponse& response) {
    response_ = response;
    downloadedData_ = QByteArray();
    downloadedLength_ = 0;
    storeCookies(response);
    if (downloadFile_) {
        connectionError_ = downloadFile_->truncate();
    } else {
        const qint64 announced = response.headers.value("Content-Length").toLongLong();
        downloadedData_.reserve(std::clamp(announced, qint64(0), maxReserve));
    }
}

// The body of an error answer is kept in memory even when the answer was to go into a file: it tells what went wrong.
bool GTMHTTPFetcher::writesToFile() const { return downloadFile_ && statusCode() <= lastSuccess; }

bool GTMHTTPFetcher::connectionDidReceiveData(QByteArrayView data) {
    if (connectionError_)
        return false;
    if (writesToFile())
        connectionError_ = downloadFile_->write(data);
    else
        downloadedData_.append(data);
    if (connectionError_)
        return false;
    downloadedLength_ += data.size();
    if (receivedDataSelector_ || receivedDataBlock_) {
        // Copied: one of them may stop the fetch, which releases them.
        runCallback([self = shared_from_this(), selector = receivedDataSelector_, block = receivedDataBlock_,
                     received = downloadedData_] {
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
    MaybeError error = connectionError_;
    if (!error)
        error = updateFetchHistory();
    if (!error && statusCode() > lastSuccess)
        error = statusError();
    if (!error && downloadFile_) {
        error = downloadFile_->moveIntoPlace();
        if (!error)
            downloadFile_ = nullptr;
    }
    if (error)
        attemptDidFail(*error);
    else
        attemptDidEnd(std::nullopt, false);
}

void GTMHTTPFetcher::connectionDidFailWithError(const Error& error) {
    if (!connection_)
        return;
    const auto self = shared_from_this();
    downloadedData_ = QByteArray(); // a failed connection delivers no part of a body
    response_.reset();
    attemptDidFail(connectionError_.value_or(error));
}

// Remembers the answer, or answers a 304 with what is remembered.
MaybeError GTMHTTPFetcher::updateFetchHistory() {
    if (!fetchHistory_ || !response_)
        return std::nullopt;
    if (statusCode() == notModified) {
        if (fetchHistory_->shouldCacheETaggedData()) {
            const QByteArray cached = fetchHistory_->cachedDataForRequest(wireRequest_);
            if (!cached.isNull())
                return useCachedData(cached);
        }
        return std::nullopt;
    }
    if (downloadFile_)
        fetchHistory_->removeCachedDataForRequest(wireRequest_);
    else
        fetchHistory_->updateFetchHistoryWithRequest(wireRequest_, *response_, downloadedData_);
    return std::nullopt;
}

MaybeError GTMHTTPFetcher::useCachedData(const QByteArray& data) {
    qCDebug(httpLog, "not modified, the remembered data is used");
    response_->statusCode = 200;
    downloadedLength_ = data.size();
    if (downloadFile_)
        return downloadFile_->write(data);
    downloadedData_ = data;
    return std::nullopt;
}

Error GTMHTTPFetcher::statusError() const {
    const QString request = requestDescription();
    const QString reason = QStringLiteral("The server answered %1 to %2").arg(statusText(statusCode()), request);
    QVariantMap details{{errorKey::reason, reason}, {errorKey::request, request}};
    if (!downloadedData_.isEmpty())
        details.insert(errorKey::data, downloadedData_);
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
    if (!cookieStorage_)
        return;
    const auto cookies = parseSetCookieFields(response.headers, response.url, timeSource_->now());
    if (!cookies.isEmpty())
        cookieStorage_->setCookies(cookies);
}

void GTMHTTPFetcher::addCookies(URLRequest& request) const {
    if (!cookieStorage_)
        return;
    const QByteArray stored = cookieStorage_->cookieHeaderForURL(request.url);
    if (stored.isEmpty())
        return;
    const QByteArray own = request.headers.value("Cookie");
    request.headers.set("Cookie", own.isEmpty() ? stored : QByteArray(own + "; " + stored));
}

} // namespace quenby
