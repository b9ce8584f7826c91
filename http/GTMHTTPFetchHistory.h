// Remembers the ETags of earlier answers, so that repeated requests are conditional, and if wanted their data, from
// which a 304 is then answered. Also the home of the cookies of a service's fetchers.
//
// Threads: any.
#pragma once

#include "http/GTMCookieStorage.h"
#include "http/GTMURLCache.h"

#include <atomic>
#include <memory>

namespace quenby {

class GTMHTTPFetchHistory {
public:
    static constexpr qint64 defaultMemoryCapacity = 15 * 1024 * 1024;

    explicit GTMHTTPFetchHistory(std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource(),
                                 qint64 memoryCapacity = defaultMemoryCapacity, bool shouldCacheETaggedData = false);

    // Makes a GET conditional on the remembered ETag. A caller who brings an If-None-Match of his own manages the
    // resource himself: what is remembered of it is dropped.
    void updateRequest(URLRequest& request, bool isHTTPGet);
    // Remembers or drops what the answer says about the request's address.
    void updateFetchHistoryWithRequest(const URLRequest& request, const HTTPResponse& response,
                                       const QByteArray& downloadedData);
    // Null when there is none. The entry is not pruned for a while, since its data will be asked for.
    QByteArray cachedETagForRequest(const URLRequest& request);
    QByteArray cachedDataForRequest(const URLRequest& request); // null when there is no entry
    void removeCachedDataForRequest(const URLRequest& request);
    void clearETaggedDataCache();
    void clearHistory(); // the data and the cookies
    void removeAllCookies();

    // Off at the start: nothing is remembered and no request is changed.
    void setShouldRememberETags(bool remember);
    bool shouldRememberETags() const { return shouldRememberETags_; }
    void setShouldCacheETaggedData(bool cache);
    bool shouldCacheETaggedData() const { return shouldCacheETaggedData_; }
    void setMemoryCapacity(qint64 bytes) { etaggedDataCache_.setMemoryCapacity(bytes); }
    qint64 memoryCapacity() const { return etaggedDataCache_.memoryCapacity(); }
    const std::shared_ptr<GTMCookieStorage>& cookieStorage() const { return cookieStorage_; }

private:
    GTMURLCache etaggedDataCache_;
    const std::shared_ptr<GTMCookieStorage> cookieStorage_;
    std::atomic<bool> shouldRememberETags_;
    std::atomic<bool> shouldCacheETaggedData_;
};

} // namespace quenby
