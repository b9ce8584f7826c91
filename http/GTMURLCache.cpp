#include "http/GTMURLCache.h"

namespace quenby {

GTMURLCache::GTMURLCache(qint64 memoryCapacity, std::shared_ptr<TimeSource> timeSource)
    : timeSource_(std::move(timeSource))
    , memoryCapacity_(memoryCapacity) {}

void GTMURLCache::storeCachedResponse(const HTTPResponse& response, const QByteArray& data, const URLRequest& request) {
    const std::lock_guard lock(mutex_);
    remove(request.url);
    if (data.size() >= memoryCapacity_)
        return;
    Entry& entry = responses_[request.url];
    entry.cached.response = response;
    entry.cached.data = data;
    touch(request.url, entry);
    totalDataSize_ += data.size();
    prune();
}

std::optional<GTMCachedURLResponse> GTMURLCache::cachedResponseForRequest(const URLRequest& request) {
    const std::lock_guard lock(mutex_);
    const Entry* entry = find(request.url);
    return entry ? std::optional(entry->cached) : std::nullopt;
}

std::optional<GTMCachedURLResponse> GTMURLCache::reserveCachedResponseForRequest(const URLRequest& request) {
    const std::lock_guard lock(mutex_);
    Entry* entry = find(request.url);
    if (!entry)
        return std::nullopt;
    entry->cached.reservationDate = entry->cached.useDate;
    return entry->cached;
}

std::optional<GTMCachedURLResponse> GTMURLCache::releaseCachedResponseForRequest(const URLRequest& request) {
    const std::lock_guard lock(mutex_);
    Entry* entry = find(request.url);
    if (!entry)
        return std::nullopt;
    entry->cached.reservationDate.reset();
    return entry->cached;
}

void GTMURLCache::removeCachedResponseForRequest(const URLRequest& request) {
    const std::lock_guard lock(mutex_);
    remove(request.url);
}

void GTMURLCache::removeAllCachedResponses() {
    const std::lock_guard lock(mutex_);
    responses_.clear();
    uses_.clear();
    totalDataSize_ = 0;
}

void GTMURLCache::setMemoryCapacity(qint64 bytes) {
    const std::lock_guard lock(mutex_);
    memoryCapacity_ = bytes;
    prune();
}

qint64 GTMURLCache::memoryCapacity() const {
    const std::lock_guard lock(mutex_);
    return memoryCapacity_;
}

qint64 GTMURLCache::totalDataSize() const {
    const std::lock_guard lock(mutex_);
    return totalDataSize_;
}

void GTMURLCache::pruneCacheResponses() {
    const std::lock_guard lock(mutex_);
    prune();
}

GTMURLCache::Entry* GTMURLCache::find(const QUrl& url) {
    const auto found = responses_.find(url);
    if (found == responses_.end())
        return nullptr;
    touch(url, *found);
    return &*found;
}

void GTMURLCache::touch(const QUrl& url, Entry& entry) {
    uses_.erase(entry.lastUse);
    entry.lastUse = ++useCount_;
    entry.cached.useDate = timeSource_->elapsed();
    uses_.emplace(entry.lastUse, url);
}

void GTMURLCache::remove(const QUrl& url) {
    const auto found = responses_.find(url);
    if (found == responses_.end())
        return;
    totalDataSize_ -= found->cached.data.size();
    uses_.erase(found->lastUse);
    responses_.erase(found);
}

void GTMURLCache::prune() {
    const auto now = timeSource_->elapsed();
    for (auto use = uses_.begin(); use != uses_.end() && totalDataSize_ > memoryCapacity_;) {
        const QUrl url = (use++)->second;
        const auto& reserved = responses_.find(url)->cached.reservationDate;
        if (!reserved || now - *reserved >= reservationInterval)
            remove(url);
    }
}

} // namespace quenby
