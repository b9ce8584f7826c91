#include "http/GTMHTTPFetcherService.h"

#include "http/GTMHTTPFetchHistory.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>

namespace quenby {

std::shared_ptr<GTMHTTPFetcherService> GTMHTTPFetcherService::create(std::shared_ptr<TimeSource> timeSource) {
    return std::shared_ptr<GTMHTTPFetcherService>(new GTMHTTPFetcherService(std::move(timeSource)));
}

GTMHTTPFetcherService::GTMHTTPFetcherService(std::shared_ptr<TimeSource> timeSource)
    : timeSource_(std::move(timeSource))
    , fetchHistory_(std::make_shared<GTMHTTPFetchHistory>(timeSource_)) {
    settings_.shared->timeSource = timeSource_;
    settings_.shared->fetchHistory = fetchHistory_;
    settings_.shared->cookieStorageMethod = CookieStorageMethod::fetchHistory;
}

std::shared_ptr<GTMHTTPFetcher> GTMHTTPFetcherService::fetcherWithRequest(const URLRequest& request) {
    auto fetcher = GTMHTTPFetcher::fetcherWithRequest(request);
    applySettings(*fetcher);
    return fetcher;
}

void GTMHTTPFetcherService::applySettings(GTMHTTPFetcher& fetcher) {
    const Settings given = settings();
    fetcher.shareSettings(given.shared);
    fetcher.setAuthorizer(given.authorizer);
    fetcher.setService(shared_from_this());
    URLRequest& request = fetcher.mutableRequest();
    if (!given.userAgent.isEmpty() && !request.headers.contains("User-Agent"))
        request.headers.set("User-Agent", given.userAgent);
    if (given.timeout.count() > 0)
        request.timeout = given.timeout;
}

// --- Settings -----------------------------------------------------------------------------------------------------

GTMHTTPFetcherService::Settings GTMHTTPFetcherService::settings() const {
    const std::lock_guard lock(mutex_);
    return settings_;
}

template <typename Value>
void GTMHTTPFetcherService::set(Value Settings::*setting, Value value) {
    const std::lock_guard lock(mutex_);
    std::swap(settings_.*setting, value); // the old value goes after the lock does
}

template <typename Value>
void GTMHTTPFetcherService::set(Value FetchSettings::*setting, Value value) {
    QSharedDataPointer<FetchSettings> replaced; // goes after the lock does
    const std::lock_guard lock(mutex_);
    replaced = settings_.shared;
    settings_.shared.data()->*setting = std::move(value); // in a copy: fetchers keep what they were given
}

void GTMHTTPFetcherService::setMaxRunningFetchersPerHost(unsigned count) {
    set(&Settings::maxRunningFetchersPerHost, count);
}
unsigned GTMHTTPFetcherService::maxRunningFetchersPerHost() const { return settings().maxRunningFetchersPerHost; }
void GTMHTTPFetcherService::setAuthorizer(std::shared_ptr<Authorizer> authorizer) {
    set(&Settings::authorizer, std::move(authorizer));
}
std::shared_ptr<Authorizer> GTMHTTPFetcherService::authorizer() const { return settings().authorizer; }
void GTMHTTPFetcherService::setUserAgent(const QByteArray& userAgent) { set(&Settings::userAgent, userAgent); }
QByteArray GTMHTTPFetcherService::userAgent() const { return settings().userAgent; }
void GTMHTTPFetcherService::setTimeout(std::chrono::milliseconds timeout) { set(&Settings::timeout, timeout); }
void GTMHTTPFetcherService::setAllowedInsecureSchemes(const QStringList& schemes) {
    set(&FetchSettings::allowedInsecureSchemes, schemes);
}
void GTMHTTPFetcherService::setAllowLocalhostRequest(bool allow) { set(&FetchSettings::allowLocalhostRequest, allow); }
void GTMHTTPFetcherService::setCookieStorageMethod(CookieStorageMethod method) {
    set(&FetchSettings::cookieStorageMethod, method);
}
void GTMHTTPFetcherService::setCredential(const Credential& credential) {
    set(&FetchSettings::credential, std::optional(credential));
}
void GTMHTTPFetcherService::setProxyCredential(const Credential& credential) {
    set(&FetchSettings::proxyCredential, std::optional(credential));
}
void GTMHTTPFetcherService::setDelegateQueue(QObject* queue) { set(&FetchSettings::delegateQueue, queue); }
void GTMHTTPFetcherService::setConnectionClass(URLConnectionFactory factory) {
    set(&FetchSettings::connectionClass, std::move(factory));
}
void GTMHTTPFetcherService::setLogger(std::shared_ptr<FetchLogger> logger) {
    set(&FetchSettings::logger, std::move(logger));
}

void GTMHTTPFetcherService::setShouldRememberETags(bool remember) { fetchHistory_->setShouldRememberETags(remember); }
void GTMHTTPFetcherService::setShouldCacheETaggedData(bool cache) { fetchHistory_->setShouldCacheETaggedData(cache); }
void GTMHTTPFetcherService::setETaggedDataCacheCapacity(qint64 bytes) { fetchHistory_->setMemoryCapacity(bytes); }
void GTMHTTPFetcherService::clearETaggedDataCache() { fetchHistory_->clearETaggedDataCache(); }
void GTMHTTPFetcherService::clearHistory() { fetchHistory_->clearHistory(); }

// --- All fetchers at once -----------------------------------------------------------------------------------------

size_t GTMHTTPFetcherService::numberOfFetchers() const {
    const std::lock_guard lock(mutex_);
    return queue_.size();
}

size_t GTMHTTPFetcherService::numberOfRunningFetchers() const {
    const std::lock_guard lock(mutex_);
    return queue_.size() - queue_.waitingCount();
}

size_t GTMHTTPFetcherService::numberOfDelayedFetchers() const {
    const std::lock_guard lock(mutex_);
    return queue_.waitingCount();
}

std::vector<std::shared_ptr<GTMHTTPFetcher>>
GTMHTTPFetcherService::issuedFetchersWithRequestURL(const QUrl& url) const {
    const std::lock_guard lock(mutex_);
    return queue_.withURL(url);
}

bool GTMHTTPFetcherService::isDelayingFetcher(const GTMHTTPFetcher& fetcher) const {
    const std::lock_guard lock(mutex_);
    return queue_.isWaiting(fetcher);
}

void GTMHTTPFetcherService::stopAllFetchers() {
    std::vector<std::shared_ptr<GTMHTTPFetcher>> stopping;
    {
        const std::lock_guard lock(mutex_);
        stopping = queue_.takeAll();
    }
    for (const auto& fetcher : stopping)
        fetcher->stopFetching();
}

bool GTMHTTPFetcherService::waitForCompletionOfAllFetchersWithTimeout(std::chrono::milliseconds timeout) {
    using namespace std::chrono_literals;
    const QDeadlineTimer deadline(timeout);
    QTimer wakeUp; // for the deadline, and for fetchers of other threads
    wakeUp.start(5ms);
    std::vector<std::shared_ptr<GTMHTTPFetcher>> seen;
    {
        const std::lock_guard lock(mutex_);
        seen = queue_.all();
    }
    const auto hasToCallBack = [](const auto& fetcher) { return fetcher->callbackTicket().isPending(); };
    while (numberOfFetchers() > 0 || std::any_of(seen.begin(), seen.end(), hasToCallBack)) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::sendPostedEvents(); // a loop inside another, on GLib, leaves what is posted to the outer one
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// --- Called by fetchers -------------------------------------------------------------------------------------------

bool GTMHTTPFetcherService::fetcherShouldBeginFetching(GTMHTTPFetcher& fetcher) {
    const auto shared = fetcher.shared_from_this();
    const std::lock_guard lock(mutex_);
    return queue_.admit(shared, fetcher.request().url, fetcher.servicePriority(), settings_.maxRunningFetchersPerHost);
}

void GTMHTTPFetcherService::fetcherDidStop(GTMHTTPFetcher& fetcher) {
    FetcherQueue::Removal removal; // outlives the lock
    {
        const std::lock_guard lock(mutex_);
        removal = queue_.remove(fetcher, settings_.maxRunningFetchersPerHost);
    }
    for (const auto& next : removal.admitted)
        next->beginQueuedFetchSoon();
}

} // namespace quenby
