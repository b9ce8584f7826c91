#include "http/GTMHTTPFetcher.h"

#include "http/FetchAttempt.h"
#include "http/GTMCookieStorage.h"
#include "http/GTMHTTPFetchHistory.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QThread>
#include <QTimer>

namespace quenby {
namespace {

// Of fetchers without a service; they share it until they change something.
const QSharedDataPointer<FetchSettings>& ownSettings() {
    static const QSharedDataPointer<FetchSettings> settings(new FetchSettings);
    return settings;
}

} // namespace

GTMHTTPFetcher::GTMHTTPFetcher(URLRequest request)
    : request_(std::move(request))
    , settings_(ownSettings()) {}

GTMHTTPFetcher::~GTMHTTPFetcher() { logDeferredRecord(); }

std::shared_ptr<GTMHTTPFetcher> GTMHTTPFetcher::fetcherWithRequest(URLRequest request) {
    return share(new GTMHTTPFetcher(std::move(request)));
}

std::shared_ptr<GTMHTTPFetcher> GTMHTTPFetcher::fetcherWithURL(const QUrl& url) {
    return fetcherWithRequest(URLRequest(url));
}

std::shared_ptr<GTMHTTPFetcher> GTMHTTPFetcher::fetcherWithURLString(const QString& urlString) {
    return fetcherWithURL(QUrl(urlString));
}

void GTMHTTPFetcher::destroyOnOwnThread(GTMHTTPFetcher* fetcher) {
    if (fetcher->thread() == QThread::currentThread())
        delete fetcher;
    else
        fetcher->post([fetcher] { delete fetcher; }); // the only thing posted: all else would hold the fetcher
}

void GTMHTTPFetcher::post(std::function<void()> function) {
    {
        const std::lock_guard lock(mutex_);
        posted_.append(std::move(function));
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool GTMHTTPFetcher::event(QEvent* event) {
    if (event->type() != QEvent::User)
        return QObject::event(event);
    std::function<void()> function;
    {
        const std::lock_guard lock(mutex_);
        function = posted_.takeFirst();
    }
    function(); // this fetcher may be gone now
    return true;
}

void GTMHTTPFetcher::stopFetching() {
    CompletionTicket ticket;
    quint64 generation = 0;
    {
        const std::lock_guard lock(mutex_);
        ticket = gate_.ticket();
        generation = generation_;
    }
    // At once, on whatever thread: from here on no callback starts.
    ticket.cancel();
    if (thread() == QThread::currentThread()) {
        stopFetch(ReleaseCallbacks::yes);
        return;
    }
    post([self = shared_from_this(), generation] {
        if (self->generation_ == generation)
            self->stopFetch(ReleaseCallbacks::yes);
    });
}

bool GTMHTTPFetcher::isFetching() const { return state_ != State::idle; }

bool GTMHTTPFetcher::waitForCompletionWithTimeout(std::chrono::milliseconds timeout) {
    using namespace std::chrono_literals;
    const auto self = shared_from_this();
    const QDeadlineTimer deadline(timeout);
    QTimer wakeUp; // for the deadline, and for a callback that runs on another thread
    wakeUp.start(5ms);
    while (isFetching() || callbackTicket().isPending()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::sendPostedEvents(); // a loop inside another, on GLib, leaves what is posted to the outer one
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void GTMHTTPFetcher::setPostData(const QByteArray& data) {
    request_.body = data.isNull() ? QByteArray("") : data; // empty, but there
    request_.bodyStream = nullptr;
    postStreamStart_.reset();
}

void GTMHTTPFetcher::setPostStream(std::shared_ptr<QIODevice> stream, qint64 length) {
    request_.body = QByteArray();
    request_.bodyStream = std::move(stream);
    request_.bodyLength = length;
    postStreamStart_.reset();
}

void GTMHTTPFetcher::setMaxSendSpeed(qint64 bytesPerSecond) {
    maxSendSpeed_ = bytesPerSecond;
    if (const auto& connection = attempt_->connection)
        connection->setMaxSendSpeed(bytesPerSecond);
}

QString GTMHTTPFetcher::temporaryDownloadPath() const {
    const auto& file = attempt_->downloadFile;
    return file ? file->temporaryPath() : QString();
}

void GTMHTTPFetcher::shareSettings(const QSharedDataPointer<FetchSettings>& settings) {
    settings_ = settings;
    request_.shouldHandleCookies = settings->cookieStorageMethod == CookieStorageMethod::system;
}

void GTMHTTPFetcher::setCookieStorageMethod(CookieStorageMethod method) {
    settings_->cookieStorageMethod = method;
    request_.shouldHandleCookies = method == CookieStorageMethod::system;
}

std::shared_ptr<GTMCookieStorage> GTMHTTPFetcher::cookieStorage() const {
    const auto& history = settings().fetchHistory;
    switch (settings().cookieStorageMethod) {
    case CookieStorageMethod::fetcherStatic:
        return staticCookieStorage();
    case CookieStorageMethod::fetchHistory:
        return history ? history->cookieStorage() : nullptr;
    case CookieStorageMethod::system:
    case CookieStorageMethod::none:
        break;
    }
    return nullptr;
}

std::shared_ptr<GTMCookieStorage> GTMHTTPFetcher::staticCookieStorage() {
    static const auto storage = std::make_shared<GTMCookieStorage>();
    return storage;
}

int GTMHTTPFetcher::statusCode() const { return response() ? response()->statusCode : 0; }

HeaderFields GTMHTTPFetcher::responseHeaders() const { return response() ? response()->headers : HeaderFields(); }

void GTMHTTPFetcher::setProperty(const QString& key, const QVariant& value) {
    QVariantMap& properties = luggage_.write().properties;
    if (value.isValid())
        properties.insert(key, value);
    else
        properties.remove(key);
}

void GTMHTTPFetcher::reportSentData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) {
    if (!wantsSentData())
        return;
    // The functions are copied: one of them may stop the fetch, which releases them.
    runCallback([self = shared_from_this(), selector = hooks_->sentDataSelector, block = hooks_->sentDataBlock, bytes,
                 totalBytes, totalBytesExpected] {
        if (selector)
            selector(*self, bytes, totalBytes, totalBytesExpected);
        if (block)
            block(bytes, totalBytes, totalBytesExpected);
    });
}

CompletionTicket GTMHTTPFetcher::callbackTicket() const {
    const std::lock_guard lock(mutex_);
    return gate_.ticket();
}

void GTMHTTPFetcher::runCallback(std::function<void()> callback) {
    const CompletionTicket ticket = callbackTicket();
    if (!queueMailbox_) {
        if (ticket.isPending())
            callback();
        return;
    }
    queueMailbox_->post([ticket, callback = std::move(callback)] {
        if (ticket.isPending())
            callback();
    });
}

} // namespace quenby
