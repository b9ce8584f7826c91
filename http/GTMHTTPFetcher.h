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
// Thousands may wait in a queue: a fetcher is small until it runs, and what only a running fetch needs, or few fetchers
// ever have, is made when it is first written.
//
// Errors: reach the caller once through the finish callback. Domains: errorDomain::fetcher, errorDomain::httpStatus
// (final status 300 or above, body under errorKey::data), errorDomain::url (below HTTP), errorDomain::posix (the
// downloaded file could not be moved into place).
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "core/Mailbox.h"
#include "http/Authorizer.h"
#include "http/FetchLogger.h"
#include "http/FetchSettings.h"
#include "http/Lazy.h"
#include "http/RetryPolicy.h"
#include "http/URLConnection.h"

#include <QObject>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <mutex>

namespace quenby {

class GTMHTTPFetcherService;
struct FetchAttempt;

// Posted through GTMHTTPFetcher::notification.
inline const QString kGTMHTTPFetcherStartedNotification = QStringLiteral("kGTMHTTPFetcherStartedNotification");
inline const QString kGTMHTTPFetcherStoppedNotification = QStringLiteral("kGTMHTTPFetcherStoppedNotification");
inline const QString kGTMHTTPFetcherRetryDelayStartedNotification =
    QStringLiteral("kGTMHTTPFetcherRetryDelayStartedNotification");
inline const QString kGTMHTTPFetcherRetryDelayStoppedNotification =
    QStringLiteral("kGTMHTTPFetcherRetryDelayStoppedNotification");

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
    void setCredential(const Credential& credential) { settings_->credential = credential; }
    void setProxyCredential(const Credential& credential) { settings_->proxyCredential = credential; }
    // The fetcher lets go of its authorizer when it ends.
    void setAuthorizer(std::shared_ptr<Authorizer> authorizer) { authorizer_ = std::move(authorizer); }
    std::shared_ptr<Authorizer> authorizer() const { return authorizer_; }
    void setAllowedInsecureSchemes(const QStringList& schemes) { settings_->allowedInsecureSchemes = schemes; }
    const QStringList& allowedInsecureSchemes() const { return settings_->allowedInsecureSchemes; }
    // How fast the request's body may go out, in bytes per second; 0: no limit. At any time, also while it does.
    virtual void setMaxSendSpeed(qint64 bytesPerSecond);
    qint64 maxSendSpeed() const { return maxSendSpeed_; }
    void setAllowLocalhostRequest(bool allow) { settings_->allowLocalhostRequest = allow; }
    bool allowLocalhostRequest() const { return settings_->allowLocalhostRequest; }
    // The body goes into a temporary file beside the destination and is moved there when it is whole; the file that
    // was there before is replaced only then.
    void setDownloadPath(const QString& path) { downloadPath_ = path; }
    const QString& downloadPath() const { return downloadPath_; }
    QString temporaryDownloadPath() const; // empty when there is no such file now
    void setService(const std::shared_ptr<GTMHTTPFetcherService>& service) { service_ = service; }
    void setServicePriority(int priority) { servicePriority_ = priority; } // smaller goes first
    int servicePriority() const { return servicePriority_; }
    void setFetchHistory(std::shared_ptr<GTMHTTPFetchHistory> history) { settings_->fetchHistory = std::move(history); }
    void setCookieStorageMethod(CookieStorageMethod method);
    CookieStorageMethod cookieStorageMethod() const { return settings_->cookieStorageMethod; }
    // The cookies of every fetcher of the process that uses CookieStorageMethod::fetcherStatic.
    static std::shared_ptr<GTMCookieStorage> staticCookieStorage();
    // Callbacks run on the queue's thread instead of their context's. Must outlive the fetch.
    void setDelegateQueue(QObject* queue) { settings_->delegateQueue = queue; }
    QObject* delegateQueue() const { return settings_->delegateQueue; }
    // What makes the connections; without one, CurlConnection::factory().
    void setConnectionClass(URLConnectionFactory factory) { settings_->connectionClass = std::move(factory); }
    void setTimeSource(std::shared_ptr<TimeSource> timeSource) { settings_->timeSource = std::move(timeSource); }
    void setLogger(std::shared_ptr<FetchLogger> logger) { settings_->logger = std::move(logger); }
    // While it is set the logger is not told of the latest attempt; it is when the flag is cleared, another attempt has
    // ended, or the fetcher goes.
    void setShouldDeferResponseBodyLogging(bool defer);
    bool shouldDeferResponseBodyLogging() const { return shouldDeferResponseBodyLogging_; }

    // Called while the fetch runs, for one attempt after the other.
    void setSentDataBlock(SentDataBlock block) { hooks_.write().sentDataBlock = std::move(block); }
    const SentDataBlock& sentDataBlock() const { return hooks_->sentDataBlock; }
    void setSentDataSelector(SentDataSelector selector) { hooks_.write().sentDataSelector = std::move(selector); }
    void setReceivedDataBlock(ReceivedDataBlock block) { hooks_.write().receivedDataBlock = std::move(block); }
    void setReceivedDataSelector(ReceivedDataSelector selector) {
        hooks_.write().receivedDataSelector = std::move(selector);
    }

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
    void setRetryBlock(RetryBlock block) { hooks_.write().retryBlock = std::move(block); }
    const RetryBlock& retryBlock() const { return hooks_->retryBlock; }
    void setRetrySelector(RetrySelector selector) { hooks_.write().retrySelector = std::move(selector); }
    const RetrySelector& retrySelector() const { return hooks_->retrySelector; }
    static bool isRetryError(const Error& error) { return RetryPolicy::isRetryError(error); }

    // --- What came back -------------------------------------------------------------------------------------------

    virtual int statusCode() const; // 0 without a response
    virtual HeaderFields responseHeaders() const;
    const std::optional<HTTPResponse>& response() const { return reply_->response; }
    const QByteArray& downloadedData() const { return reply_->data; }
    qint64 downloadedLength() const { return reply_->length; }
    const QDateTime& initialRequestDate() const { return initialRequestDate_; } // of the first attempt, UTC

    // --- What travels with it -------------------------------------------------------------------------------------

    void setProperty(const QString& key, const QVariant& value); // an invalid value removes the key
    QVariant propertyForKey(const QString& key) const { return luggage_->properties.value(key); }
    const QVariantMap& properties() const { return luggage_->properties; }
    void addPropertiesFromDictionary(const QVariantMap& properties) { luggage_.write().properties.insert(properties); }
    void setUserData(const QVariant& userData) { luggage_.write().userData = userData; }
    const QVariant& userData() const { return luggage_->userData; }
    void setComment(const QString& comment) { luggage_.write().comment = comment; }
    const QString& comment() const { return luggage_->comment; }
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
    bool wantsSentData() const { return hooks_->sentDataBlock || hooks_->sentDataSelector; }
    // What the retry selector and the retry block make of a proposal, asked on this thread.
    bool askRetryHooks(bool suggestedWillRetry, const Error& error);
    void setDownloadedData(const QByteArray& data) { reply_.write().data = data; }
    const std::shared_ptr<TimeSource>& timeSource() const { return settings_->timeSource; }
    const std::shared_ptr<FetchLogger>& logger() const { return settings_->logger; }
    const URLConnectionFactory& connectionClass() const { return settings_->connectionClass; }

    bool event(QEvent* event) override;

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
    enum class State : quint8 { idle, queued, authorizing, connected, deciding, retryDelay };
    enum class ReleaseCallbacks { no, yes };

    struct Reply {
        std::optional<HTTPResponse> response;
        QByteArray data;
        qint64 length = 0;
    };
    struct Hooks {
        SentDataBlock sentDataBlock;
        SentDataSelector sentDataSelector;
        ReceivedDataBlock receivedDataBlock;
        ReceivedDataSelector receivedDataSelector;
        RetryBlock retryBlock;
        RetrySelector retrySelector;
    };
    struct Luggage {
        QVariantMap properties;
        QVariant userData;
        QString comment;
    };

    static void destroyOnOwnThread(GTMHTTPFetcher* fetcher);
    void post(std::function<void()> function); // runs on the fetcher's thread, through the event loop; any thread
    void shareSettings(const QSharedDataPointer<FetchSettings>& settings);
    const FetchSettings& settings() const { return *settings_; } // reading through settings_ may copy
    std::shared_ptr<GTMCookieStorage> cookieStorage() const;

    // Beginning (GTMHTTPFetcherBegin.cpp)
    QObject* callbackContext(QObject* context) const;
    bool begin(QObject* context, Gate gate);
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
    QSharedDataPointer<FetchSettings> settings_;
    std::shared_ptr<Authorizer> authorizer_;
    QString downloadPath_;
    std::optional<qint64> postStreamStart_;
    RetryPolicy retry_;
    qint64 maxSendSpeed_ = 0;
    int servicePriority_ = 0;
    unsigned retryCount_ = 0;

    State state_ = State::idle;
    bool isStopNotificationNeeded_ = false;
    bool hasAttemptedAuthRefresh_ = false;
    bool shouldDeferResponseBodyLogging_ = false;
    bool isURLSecret_ = false;

    std::weak_ptr<GTMHTTPFetcherService> service_;
    std::shared_ptr<GTMHTTPFetcherService> throttle_; // holds a place, or waits for one, in this service's queue
    std::shared_ptr<GTMHTTPFetcher> keptAlive_;       // itself, from begin to end

    mutable std::mutex mutex_; // guards the three below, which other threads use
    QList<std::function<void()>> posted_;
    Gate gate_;
    quint64 generation_ = 0;                 // how often the fetch was begun
    std::shared_ptr<Mailbox> delegateWatch_; // with a delegate queue: the callback still dies with its delegate
    std::shared_ptr<Mailbox> queueMailbox_;  // of the delegate queue

    Lazy<FetchAttempt> attempt_;
    Lazy<Reply> reply_;
    Lazy<Hooks> hooks_;
    Lazy<Luggage> luggage_;
    std::unique_ptr<FetchRecord> deferredRecord_;
    QDateTime initialRequestDate_;
    std::chrono::milliseconds initialRequestTime_{0}; // the same moment on the clock that only goes forward
};

} // namespace quenby
