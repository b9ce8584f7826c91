// Makes fetchers that share settings, an authorizer, cookies and a fetch history, and lets only so many of them run
// at once against one host; the others wait in that host's queue, smallest servicePriority first, then by age.
//
// Threads: any; settings and queues are locked. A queued fetcher is started on its own thread, through the event loop,
// so that fetchers which cannot begin give their places on without ever calling into one another.
// Ownership: shared. The service holds the fetchers that run or wait and is held by them meanwhile; otherwise a
// fetcher knows its service weakly.
#pragma once

#include "http/FetcherQueue.h"
#include "http/GTMHTTPFetcher.h"

#include <memory>
#include <mutex>

namespace quenby {

class GTMHTTPFetcherService : public std::enable_shared_from_this<GTMHTTPFetcherService> {
public:
    static std::shared_ptr<GTMHTTPFetcherService>
    create(std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource());

    std::shared_ptr<GTMHTTPFetcher> fetcherWithRequest(const URLRequest& request);
    // For fetchers of other classes: gives the new fetcher everything that fetcherWithRequest() gives one.
    void applySettings(GTMHTTPFetcher& fetcher);

    // --- Settings copied onto every fetcher that is made ----------------------------------------------------------

    void setMaxRunningFetchersPerHost(unsigned count); // 10; 0 means no limit
    unsigned maxRunningFetchersPerHost() const;
    void setAuthorizer(std::shared_ptr<Authorizer> authorizer);
    std::shared_ptr<Authorizer> authorizer() const;
    void detachAuthorizer() { setAuthorizer(nullptr); }
    void setUserAgent(const QByteArray& userAgent);
    QByteArray userAgent() const;
    void setTimeout(std::chrono::milliseconds timeout); // applied only when above 0
    void setAllowedInsecureSchemes(const QStringList& schemes);
    void setAllowLocalhostRequest(bool allow);
    void setCookieStorageMethod(CookieStorageMethod method); // fetchHistory at the start
    void setCredential(const Credential& credential);
    void setProxyCredential(const Credential& credential);
    void setDelegateQueue(QObject* queue);
    void setConnectionClass(URLConnectionFactory factory);
    void setLogger(std::shared_ptr<FetchLogger> logger);
    std::shared_ptr<GTMHTTPFetchHistory> fetchHistory() const { return fetchHistory_; }
    std::shared_ptr<TimeSource> timeSource() const { return timeSource_; }

    // --- Settings of the fetch history ----------------------------------------------------------------------------

    void setShouldRememberETags(bool remember);
    void setShouldCacheETaggedData(bool cache);
    void setETaggedDataCacheCapacity(qint64 bytes);
    void clearETaggedDataCache();
    void clearHistory();

    // --- All fetchers at once -------------------------------------------------------------------------------------

    size_t numberOfFetchers() const;
    size_t numberOfRunningFetchers() const;
    size_t numberOfDelayedFetchers() const;
    std::vector<std::shared_ptr<GTMHTTPFetcher>> issuedFetchersWithRequestURL(const QUrl& url) const;
    bool isDelayingFetcher(const GTMHTTPFetcher& fetcher) const;
    void stopAllFetchers();
    // Runs this thread's event loop until no fetcher runs or waits any more and those that did have called back;
    // whether that was in time.
    bool waitForCompletionOfAllFetchersWithTimeout(std::chrono::milliseconds timeout);

    // --- Called by fetchers ---------------------------------------------------------------------------------------

    bool fetcherShouldBeginFetching(GTMHTTPFetcher& fetcher); // false: queued, the service begins it later
    void fetcherDidStop(GTMHTTPFetcher& fetcher);

private:
    struct Settings {
        unsigned maxRunningFetchersPerHost = 10;
        std::shared_ptr<Authorizer> authorizer;
        QByteArray userAgent;
        std::chrono::milliseconds timeout{0};
        QSharedDataPointer<FetchSettings> shared{new FetchSettings};
    };

    explicit GTMHTTPFetcherService(std::shared_ptr<TimeSource> timeSource);
    Settings settings() const;
    template <typename Value>
    void set(Value Settings::*setting, Value value);
    template <typename Value>
    void set(Value FetchSettings::*setting, Value value);

    const std::shared_ptr<TimeSource> timeSource_;
    const std::shared_ptr<GTMHTTPFetchHistory> fetchHistory_;
    mutable std::mutex mutex_; // guards the two below; never held while a fetcher is called or let go
    Settings settings_;
    FetcherQueue queue_;
};

} // namespace quenby
