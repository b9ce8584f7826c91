#include "http/GTMHTTPFetcher.h"

#include "http/DownloadFile.h"
#include "http/GTMCookieStorage.h"
#include "http/GTMHTTPFetchHistory.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QTimer>

namespace quenby {

GTMHTTPFetcher::GTMHTTPFetcher(URLRequest request)
    : request_(std::move(request))
    , mailbox_(Mailbox::forContext(this))
    , cookieStorage_(staticCookieStorage())
    , timeSource_(makeSystemTimeSource()) {}

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
        fetcher->mailbox_->post([fetcher] { delete fetcher; });
}

void GTMHTTPFetcher::stopFetching() {
    CompletionTicket ticket;
    quint64 generation = 0;
    {
        const std::lock_guard lock(callbackMutex_);
        ticket = gate_.ticket();
        generation = generation_;
    }
    // At once, on whatever thread: from here on no callback starts.
    ticket.cancel();
    if (thread() == QThread::currentThread()) {
        stopFetch(ReleaseCallbacks::yes);
        return;
    }
    mailbox_->post([self = shared_from_this(), generation] {
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

QString GTMHTTPFetcher::temporaryDownloadPath() const {
    return downloadFile_ ? downloadFile_->temporaryPath() : QString();
}

void GTMHTTPFetcher::setFetchHistory(std::shared_ptr<GTMHTTPFetchHistory> history) {
    fetchHistory_ = std::move(history);
    if (cookieStorageMethod_ == CookieStorageMethod::fetchHistory)
        setCookieStorageMethod(cookieStorageMethod_);
}

void GTMHTTPFetcher::setCookieStorageMethod(CookieStorageMethod method) {
    cookieStorageMethod_ = method;
    request_.shouldHandleCookies = method == CookieStorageMethod::system;
    switch (method) {
    case CookieStorageMethod::fetcherStatic:
        cookieStorage_ = staticCookieStorage();
        return;
    case CookieStorageMethod::fetchHistory:
        cookieStorage_ = fetchHistory_ ? fetchHistory_->cookieStorage() : nullptr;
        return;
    case CookieStorageMethod::system:
    case CookieStorageMethod::none:
        break;
    }
    cookieStorage_ = nullptr;
}

std::shared_ptr<GTMCookieStorage> GTMHTTPFetcher::staticCookieStorage() {
    static const auto storage = std::make_shared<GTMCookieStorage>();
    return storage;
}

int GTMHTTPFetcher::statusCode() const { return response_ ? response_->statusCode : 0; }

HeaderFields GTMHTTPFetcher::responseHeaders() const { return response_ ? response_->headers : HeaderFields(); }

void GTMHTTPFetcher::setProperty(const QString& key, const QVariant& value) {
    if (value.isValid())
        properties_.insert(key, value);
    else
        properties_.remove(key);
}

void GTMHTTPFetcher::reportSentData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) {
    if (!wantsSentData())
        return;
    // The functions are copied: one of them may stop the fetch, which releases them.
    runCallback([self = shared_from_this(), selector = sentDataSelector_, block = sentDataBlock_, bytes, totalBytes,
                 totalBytesExpected] {
        if (selector)
            selector(*self, bytes, totalBytes, totalBytesExpected);
        if (block)
            block(bytes, totalBytes, totalBytesExpected);
    });
}

CompletionTicket GTMHTTPFetcher::callbackTicket() const {
    const std::lock_guard lock(callbackMutex_);
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
