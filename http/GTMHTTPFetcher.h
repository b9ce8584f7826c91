// One HTTP request from begin to its single callback: scheme check, throttle by the service, body, authorization,
// conditional GET, cookies, download into a file, and retries with exponential back-off.
//
// Threads: a fetcher belongs to the thread that made it, which needs an event loop; everything here is called on that
// thread, except stopFetching(), which may be called from any thread and keeps every callback that has not started
// from starting. The finish callback runs on the thread of its context, the others on the fetcher's thread; all of
// them run on the delegate queue's thread when one is set.
//
// Ownership: a fetcher is shared; while it runs (waiting in the service's queue included) it keeps itself alive, so a
// caller who does not want to stop it need not hold it. Stop what still runs before its thread ends.
//
// Errors: reach the caller once through the finish callback. Domains: errorDomain::fetcher, errorDomain::httpStatus
// (final status 300 or above, body under errorKey::data), errorDomain::url (below HTTP), errorDomain::posix (the
// downloaded file could not be moved into place).
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "core/Mailbox.h"
#include "core/TimeSource.h"
#include "http/Authorizer.h"
#include "http/FetchLogger.h"
#include "http/RetryPolicy.h"
#include "http/URLConnection.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <mutex>

namespace quenby {

class DownloadFile;
class GTMCookieStorage;
class GTMHTTPFetchHistory;
class GTMHTTPFetcherService;

// Posted through GTMHTTPFetcher::notification.
inline const QString kGTMHTTPFetcherStartedNotification = QStringLiteral("kGTMHTTPFetcherStartedNotification");
inline const QString kGTMHTTPFetcherStoppedNotification = QStringLiteral("kGTMHTTPFetcherStoppedNotification");
inline const QString kGTMHTTPFetcherRetryDelayStartedNotification =
    QStringLiteral("kGTMHTTPFetcherRetryDelayStartedNotification");
inline const QString kGTMHTTPFetcherRetryDelayStoppedNotification =
    QStringLiteral("kGTMHTTPFetcherRetryDelayStoppedNotification");

// Which cookies a fetcher sends and keeps. Any other number means none.
enum class CookieStorageMethod : int { fetcherStatic = 0, fetchHistory = 1, system = 2, none = -1 };

class GTMHTTPFetcher : public QObject,
                       public std::enable_shared_from_this<GTMHTTPFetcher>,
                       protected URLConnectionClient {
    Q_OBJECT

public:
    // The body, null when there is none (a failure, or a download to a file), and the error if there is one. With
    // both, the body belongs to the error.
    using CompletionHandler = std::function<void(const QByteArray& data, const MaybeError& error)>;
    using FinishSelector =
        std::function<void(GTMHTTPFetcher& fetcher, const QByteArray& data, const MaybeError& error)>;
    // Bytes sent since the last call, in all, and expected in all (-1 when not known).
    using SentDataBlock = std::function<void(qint64 bytesSent, qint64 totalBytesSent, qint64 totalBytesExpected)>;
    using SentDataSelector = std::function<void(GTMHTTPFetcher& fetcher, qint64 bytesSent, qint64 totalBytesSent,
                                                qint64 totalBytesExpected)>;
    // The body so far; with a download to a file only downloadedLength() tells how much it is.
    using ReceivedDataBlock = std::function<void(const QByteArray& dataReceivedSoFar)>;
    using ReceivedDataSelector = std::function<void(GTMHTTPFetcher& fetcher, const QByteArray& dataReceivedSoFar)>;
    // The proposal and the error; answers whether to retry. The selector is asked first and the block has the last
    // word on what the selector answered.
    using RetryBlock = std::function<bool(bool suggestedWillRetry, const Error& error)>;
    using RetrySelector = std::function<bool(GTMHTTPFetcher& fetcher, bool suggestedWillRetry, const Error& error)>;

    static std::shared_ptr<GTMHTTPFetcher> fetcherWithRequest(URLRequest request);
    static std::shared_ptr<GTMHTTPFetcher> fetcherWithURL(const QUrl& url);
    static std::shared_ptr<GTMHTTPFetcher> fetcherWithURLString(const QString& urlString);
    ~GTMHTTPFetcher() override;

    // --- Beginning and ending -------------------------------------------------------------------------------------

    // Whether the fetch began or was queued by the service. When it could not begin, the callback still comes. Without
    // a context or a handler the fetch runs and tells nobody. A fetcher may be begun again when it has ended.
    bool beginFetchWithDelegate(QObject* delegate, FinishSelector didFinish);
    bool beginFetchWithCompletionHandler(QObject* context, CompletionHandler handler);
    // Ends without a callback. Any thread.
    void stopFetching();
    // Whether the fetch has been begun and not yet ended: queued, being authorized, connected or waiting to retry.
    virtual bool isFetching() const;
    // Runs this thread's event loop until the fetch has ended and called back; whether that was in time.
    bool waitForCompletionWithTimeout(std::chrono::milliseconds timeout);

    // --- The request, before it begins ----------------------------------------------------------------------------

    // As the caller and the authorizer made it; after a redirect, where it went.
    const URLRequest& request() const { return request_; }
    URLRequest& mutableRequest() { return request_; }
    void setPostData(const QByteArray& data);
    void setPostStream(std::shared_ptr<QIODevice> stream, qint64 length = -1);
    void setCredential(const Credential& credential) { credential_ = credential; }
    void setProxyCredential(const Credential& credential) { proxyCredential_ = credential; }
    // The fetcher lets go of its authorizer when it ends.
    void setAuthorizer(std::shared_ptr<Authorizer> authorizer) { authorizer_ = std::move(authorizer); }
    std::shared_ptr<Authorizer> authorizer() const { return authorizer_; }
    void setAllowedInsecureSchemes(const QStringList& schemes) { allowedInsecureSchemes_ = schemes; }
    const QStringList& allowedInsecureSchemes() const { return allowedInsecureSchemes_; }
    void setAllowLocalhostRequest(bool allow) { allowLocalhostRequest_ = allow; }
    bool allowLocalhostRequest() const { return allowLocalhostRequest_; }
    // The body goes into a temporary file beside the destination and is moved there when it is whole; the file that
    // was there before is replaced only then.
    void setDownloadPath(const QString& path) { downloadPath_ = path; }
    const QString& downloadPath() const { return downloadPath_; }
    QString temporaryDownloadPath() const; // empty when there is no such file now
    void setService(const std::shared_ptr<GTMHTTPFetcherService>& service) { service_ = service; }
    void setServicePriority(int priority) { servicePriority_ = priority; } // smaller goes first
    int servicePriority() const { return servicePriority_; }
    void setFetchHistory(std::shared_ptr<GTMHTTPFetchHistory> history);
    void setCookieStorageMethod(CookieStorageMethod method);
    CookieStorageMethod cookieStorageMethod() const { return cookieStorageMethod_; }
    // The cookies of every fetcher of the process that uses CookieStorageMethod::fetcherStatic.
    static std::shared_ptr<GTMCookieStorage> staticCookieStorage();
    // Callbacks run on the queue's thread instead of their context's. Must outlive the fetch.
    void setDelegateQueue(QObject* queue) { delegateQueue_ = queue; }
    QObject* delegateQueue() const { return delegateQueue_; }
    // What makes the connections; without one, CurlConnection::factory().
    void setConnectionClass(URLConnectionFactory factory) { connectionClass_ = std::move(factory); }
    void setTimeSource(std::shared_ptr<TimeSource> timeSource) { timeSource_ = std::move(timeSource); }
    void setLogger(std::shared_ptr<FetchLogger> logger) { logger_ = std::move(logger); }
    // While it is set the logger is not told of the latest attempt; it is when the flag is cleared, another attempt has
    // ended, or the fetcher goes.
    void setShouldDeferResponseBodyLogging(bool defer);
    bool shouldDeferResponseBodyLogging() const { return shouldDeferResponseBodyLogging_; }

    // Called while the fetch runs, for one attempt after the other.
    void setSentDataBlock(SentDataBlock block) { sentDataBlock_ = std::move(block); }
    const SentDataBlock& sentDataBlock() const { return sentDataBlock_; }
    void setSentDataSelector(SentDataSelector selector) { sentDataSelector_ = std::move(selector); }
    void setReceivedDataBlock(ReceivedDataBlock block) { receivedDataBlock_ = std::move(block); }
    void setReceivedDataSelector(ReceivedDataSelector selector) { receivedDataSelector_ = std::move(selector); }

    // --- Retry ----------------------------------------------------------------------------------------------------

    void setRetryEnabled(bool enabled) { retry_.setEnabled(enabled); }
    bool isRetryEnabled() const { return retry_.isEnabled(); }
    void setMinRetryInterval(double seconds) { retry_.setMinRetryInterval(seconds); }
    void setMaxRetryInterval(double seconds) { retry_.setMaxRetryInterval(seconds); }
    double maxRetryInterval() const { return retry_.maxRetryInterval(); }
    const RetryPolicy& retryPolicy() const { return retry_; }
    RetryPolicy& mutableRetryPolicy() { return retry_; }
    double nextRetryInterval() const { return retry_.nextRetryInterval(); }
    unsigned retryCount() const { return retryCount_; }
    void setRetryBlock(RetryBlock block) { retryBlock_ = std::move(block); }
    const RetryBlock& retryBlock() const { return retryBlock_; }
    void setRetrySelector(RetrySelector selector) { retrySelector_ = std::move(selector); }
    const RetrySelector& retrySelector() const { return retrySelector_; }
    static bool isRetryError(const Error& error) { return RetryPolicy::isRetryError(error); }

    // --- What came back -------------------------------------------------------------------------------------------

    virtual int statusCode() const; // 0 without a response
    virtual HeaderFields responseHeaders() const;
    const std::optional<HTTPResponse>& response() const { return response_; }
    const QByteArray& downloadedData() const { return downloadedData_; }
    qint64 downloadedLength() const { return downloadedLength_; }
    const QDateTime& initialRequestDate() const { return initialRequestDate_; } // of the first attempt, UTC

    // --- What travels with it -------------------------------------------------------------------------------------

    void setProperty(const QString& key, const QVariant& value); // an invalid value removes the key
    QVariant propertyForKey(const QString& key) const { return properties_.value(key); }
    const QVariantMap& properties() const { return properties_; }
    void addPropertiesFromDictionary(const QVariantMap& properties) { properties_.insert(properties); }
    void setUserData(const QVariant& userData) { userData_ = userData; }
    const QVariant& userData() const { return userData_; }
    void setComment(const QString& comment) { comment_ = comment; }
    const QString& comment() const { return comment_; }
    // The request's address is a secret (an upload location): logs and error texts show its host alone.
    void setIsURLSecret(bool secret) { isURLSecret_ = secret; }
    bool isURLSecret() const { return isURLSecret_; }

Q_SIGNALS:
    // Started: a connection was created. Stopped: once per start. See the constants above.
    void notification(const QString& name);

protected:
    explicit GTMHTTPFetcher(URLRequest request);
    // The first shared owner of a new fetcher: wherever the last one lets go, it is destroyed on its own thread.
    template <typename Fetcher>
    static std::shared_ptr<Fetcher> share(Fetcher* fetcher) {
        return std::shared_ptr<Fetcher>(fetcher, [](Fetcher* last) { destroyOnOwnThread(last); });
    }

    // --- For fetches of several requests --------------------------------------------------------------------------

    // The callbacks are in place: begins the fetch. Answers what the public begin answers.
    virtual bool beginFetch() { return beginRequest(); }
    // Begins when the service, if there is one, has a place: at once or later.
    bool beginRequest();
    // The fetch has its place, which it keeps until it is given back: sends this fetcher's own request unless a
    // subclass has another way to begin. Answers what the public begin answers.
    virtual bool beginInPlace() { return sendRequest(true); }
    // Leaves the service's queue, whether the fetch has a place there or waits for one. The end of the fetch does it.
    void givePlaceBack();
    // The own request has ended for good and its connection is gone: the body, and the error if there is one; or it
    // could not begin. This is the fetch's end unless a subclass goes on.
    virtual void requestDidEnd(const QByteArray& data, const MaybeError& error) { finishFetch(data, error); }
    // Ends the fetch and hands the result to the caller.
    void finishFetch(const QByteArray& data, const MaybeError& error);
    // The fetch is being stopped: ends what the subclass has running. Called on the fetcher's thread, without a lock.
    virtual void stopSubFetches() {}
    // Progress of the own request's body; goes to the caller as it is unless a subclass adds to it.
    virtual void requestDidSendData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) {
        reportSentData(bytes, totalBytes, totalBytesExpected);
    }
    void reportSentData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected);
    bool wantsSentData() const { return sentDataBlock_ || sentDataSelector_; }
    // What the retry selector and the retry block make of a proposal, asked on this thread.
    bool askRetryHooks(bool suggestedWillRetry, const Error& error);
    void setDownloadedData(const QByteArray& data) { downloadedData_ = data; }
    const std::shared_ptr<TimeSource>& timeSource() const { return timeSource_; }
    const std::shared_ptr<FetchLogger>& logger() const { return logger_; }
    const URLConnectionFactory& connectionClass() const { return connectionClass_; }

    std::optional<URLRequest> connectionWillSendRequest(const URLRequest& redirected,
                                                        const HTTPResponse& redirectResponse) override;
    std::optional<Credential> connectionDidReceiveChallenge(const AuthenticationChallenge& challenge) override;
    void connectionDidSendBodyData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) override;
    void connectionDidReceiveResponse(const HTTPResponse& response) override;
    bool connectionDidReceiveData(QByteArrayView data) override;
    void connectionDidFinishLoading() override;
    void connectionDidFailWithError(const Error& error) override;

private:
    friend class GTMHTTPFetcherService;

    using Gate = CompletionGate<std::shared_ptr<GTMHTTPFetcher>, QByteArray, MaybeError>;
    // deciding: the attempt has failed and the delegate queue is being asked whether to retry.
    enum class State { idle, queued, authorizing, connected, deciding, retryDelay };
    enum class ReleaseCallbacks { no, yes };

    static void destroyOnOwnThread(GTMHTTPFetcher* fetcher);

    // Beginning (GTMHTTPFetcherBegin.cpp)
    bool begin(QObject* context, Gate::Function callback);
    Gate makeGate(QObject* context, Gate::Function callback);
    void beginQueuedFetchSoon(); // the service has made room; any thread
    bool beginFetchMayDelay(bool mayDelay, bool mayAuthorize);
    bool sendRequest(bool mayAuthorize);
    MaybeError schemeError() const;
    void makePostIfNeeded();
    bool rewindPostStream();
    bool beginAuthorizing();
    void prepareWireRequest();
    MaybeError prepareDownloadFile();
    bool startConnection();
    bool failToBegin(const Error& error);

    // Receiving (GTMHTTPFetcherReceiving.cpp)
    void storeCookies(const HTTPResponse& response);
    void addCookies(URLRequest& request) const;
    bool writesToFile() const;
    MaybeError updateFetchHistory();
    MaybeError useCachedData(const QByteArray& data);
    Error statusError() const;
    QString shownAddress() const;
    QString requestDescription() const; // the method and that

    // Ending and retrying (GTMHTTPFetcherEnding.cpp)
    void attemptDidFail(const Error& error);
    bool mayRetry(bool hasRefreshedAuthorization) const;
    bool refreshAuthorization();
    void attemptDidEnd(const MaybeError& error, bool willRetry);
    void beginRetryTimer();
    void retryTimerFired();
    void destroyRetryTimer();
    void stopFetch(ReleaseCallbacks release);
    void logAttempt(const MaybeError& error, bool willRetry);
    void logDeferredRecord();
    void postStopNotification();
    bool isCurrent(quint64 generation) const; // still the fetch that it was, and not stopped
    CompletionTicket callbackTicket() const;
    void runCallback(std::function<void()> callback);

    URLRequest request_;
    URLRequest wireRequest_; // of the running attempt: the request with cookies and conditions
    std::optional<HTTPResponse> response_;
    std::unique_ptr<URLConnection> connection_;
    State state_ = State::idle;
    bool isStopNotificationNeeded_ = false;
    std::shared_ptr<GTMHTTPFetcher> keptAlive_; // itself, from begin to end

    const std::shared_ptr<Mailbox> mailbox_; // for what other threads have to say

    mutable std::mutex callbackMutex_; // guards the two below; stopFetching() reads them on any thread
    Gate gate_;
    quint64 generation_ = 0;                 // how often the fetch was begun
    std::shared_ptr<Mailbox> delegateWatch_; // with a delegate queue: the callback still dies with its delegate
    std::shared_ptr<Mailbox> queueMailbox_;  // of the delegate queue

    std::optional<Credential> credential_;
    std::optional<Credential> proxyCredential_;
    MaybeError connectionError_; // found in a connection's callback, in place of what the connection will say
    std::shared_ptr<Authorizer> authorizer_;
    CompletionTicket authorization_;
    bool hasAttemptedAuthRefresh_ = false;
    QStringList allowedInsecureSchemes_;
    bool allowLocalhostRequest_ = false;

    QString downloadPath_;
    std::unique_ptr<DownloadFile> downloadFile_;
    QByteArray downloadedData_;
    qint64 downloadedLength_ = 0;
    std::optional<qint64> postStreamStart_;

    std::weak_ptr<GTMHTTPFetcherService> service_;
    std::shared_ptr<GTMHTTPFetcherService> throttle_; // holds a place, or waits for one, in this service's queue
    int servicePriority_ = 0;
    std::shared_ptr<GTMHTTPFetchHistory> fetchHistory_;
    std::shared_ptr<GTMCookieStorage> cookieStorage_;
    CookieStorageMethod cookieStorageMethod_ = CookieStorageMethod::fetcherStatic;

    QObject* delegateQueue_ = nullptr;
    URLConnectionFactory connectionClass_;
    std::shared_ptr<TimeSource> timeSource_;
    std::shared_ptr<FetchLogger> logger_;
    bool shouldDeferResponseBodyLogging_ = false;
    std::optional<FetchRecord> deferredRecord_;
    SentDataBlock sentDataBlock_;
    SentDataSelector sentDataSelector_;
    ReceivedDataBlock receivedDataBlock_;
    ReceivedDataSelector receivedDataSelector_;

    RetryPolicy retry_;
    unsigned retryCount_ = 0;
    std::unique_ptr<Timer> retryTimer_;
    RetryBlock retryBlock_;
    RetrySelector retrySelector_;
    QDateTime initialRequestDate_;
    std::chrono::milliseconds initialRequestTime_{0}; // the same moment on the clock that only goes forward
    QDateTime attemptDate_;
    std::chrono::milliseconds attemptTime_{0};
    QUrl originalURL_;

    QVariantMap properties_;
    QVariant userData_;
    QString comment_;
    bool isURLSecret_ = false;
};

} // namespace quenby
