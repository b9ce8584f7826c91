#include "http/GTMHTTPFetchHistory.h"

namespace quenby {

GTMHTTPFetchHistory::GTMHTTPFetchHistory(std::shared_ptr<TimeSource> timeSource, qint64 memoryCapacity,
                                         bool shouldCacheETaggedData)
    : etaggedDataCache_(memoryCapacity, timeSource)
    , cookieStorage_(std::make_shared<GTMCookieStorage>(timeSource))
    , shouldRememberETags_(shouldCacheETaggedData)
    , shouldCacheETaggedData_(shouldCacheETaggedData) {}

void GTMHTTPFetchHistory::updateRequest(URLRequest& request, bool isHTTPGet) {
    if (!shouldRememberETags_)
        return;
    request.reloadIgnoringLocalCache = true;
    if (!isHTTPGet)
        return;
    if (request.headers.contains("If-None-Match")) {
        removeCachedDataForRequest(request);
        return;
    }
    const QByteArray etag = cachedETagForRequest(request);
    if (!etag.isNull())
        request.headers.set("If-None-Match", etag);
}

void GTMHTTPFetchHistory::updateFetchHistoryWithRequest(const URLRequest& request, const HTTPResponse& response,
                                                        const QByteArray& downloadedData) {
    constexpr int notModified = 304;
    constexpr int lastSuccess = 299;
    if (!shouldRememberETags_ || response.headers.isEmpty() || response.statusCode == notModified)
        return;
    // What changes a resource makes the memory of it worthless, and its answer is not the resource.
    const bool isTheResource = request.isReadOnly() && response.statusCode <= lastSuccess;
    if (!isTheResource || !response.headers.contains("ETag"))
        removeCachedDataForRequest(request);
    else
        etaggedDataCache_.storeCachedResponse(response, shouldCacheETaggedData_ ? downloadedData : QByteArray(),
                                              request);
}

QByteArray GTMHTTPFetchHistory::cachedETagForRequest(const URLRequest& request) {
    const auto cached = etaggedDataCache_.reserveCachedResponseForRequest(request);
    return cached ? cached->response.headers.value("ETag") : QByteArray();
}

QByteArray GTMHTTPFetchHistory::cachedDataForRequest(const URLRequest& request) {
    const auto cached = etaggedDataCache_.releaseCachedResponseForRequest(request);
    if (!cached)
        return {};
    return cached->data.isNull() ? QByteArray("") : cached->data;
}

void GTMHTTPFetchHistory::removeCachedDataForRequest(const URLRequest& request) {
    etaggedDataCache_.removeCachedResponseForRequest(request);
}

void GTMHTTPFetchHistory::clearETaggedDataCache() { etaggedDataCache_.removeAllCachedResponses(); }

void GTMHTTPFetchHistory::clearHistory() {
    clearETaggedDataCache();
    removeAllCookies();
}

void GTMHTTPFetchHistory::removeAllCookies() { cookieStorage_->removeAllCookies(); }

void GTMHTTPFetchHistory::setShouldRememberETags(bool remember) {
    const bool wasRemembering = shouldRememberETags_.exchange(remember);
    if (wasRemembering && !remember)
        clearETaggedDataCache();
}

void GTMHTTPFetchHistory::setShouldCacheETaggedData(bool cache) {
    const bool wasCaching = shouldCacheETaggedData_.exchange(cache);
    if (wasCaching != cache)
        clearETaggedDataCache(); // an entry without its data could not answer a 304
    if (cache)
        setShouldRememberETags(true);
}

} // namespace quenby
