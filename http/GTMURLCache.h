// Responses by address, with as much data as fits into a given memory.
//
// Threads: any.
#pragma once

#include "core/TimeSource.h"
#include "http/URLRequest.h"

#include <QHash>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace quenby {

// Dates are readings of TimeSource::elapsed(), so that a clock that jumps changes nothing.
struct GTMCachedURLResponse {
    HTTPResponse response; // its header fields hold the ETag
    QByteArray data;       // may be empty
    std::chrono::milliseconds useDate{0};
    // When its ETag was handed out for a conditional request; absent once its data was used.
    std::optional<std::chrono::milliseconds> reservationDate;
};

class GTMURLCache {
public:
    static constexpr std::chrono::milliseconds reservationInterval = std::chrono::seconds(60);

    GTMURLCache(qint64 memoryCapacity, std::shared_ptr<TimeSource> timeSource);

    // Replaces what was stored for the address. Data as large as the whole capacity is not stored, nor its response.
    void storeCachedResponse(const HTTPResponse& response, const QByteArray& data, const URLRequest& request);
    // Counts as a use.
    std::optional<GTMCachedURLResponse> cachedResponseForRequest(const URLRequest& request);
    // The same, and the entry is kept from pruning for the reservation interval, or given free again.
    std::optional<GTMCachedURLResponse> reserveCachedResponseForRequest(const URLRequest& request);
    std::optional<GTMCachedURLResponse> releaseCachedResponseForRequest(const URLRequest& request);
    void removeCachedResponseForRequest(const URLRequest& request);
    void removeAllCachedResponses();

    void setMemoryCapacity(qint64 bytes); // prunes
    qint64 memoryCapacity() const;
    qint64 totalDataSize() const;
    // Drops the entries used longest ago, except reserved ones, until the data fits. Storing does this by itself.
    void pruneCacheResponses();

private:
    struct Entry {
        GTMCachedURLResponse cached;
        quint64 lastUse = 0; // its key in uses_
    };

    Entry* find(const QUrl& url); // locked by the caller, as all below
    void touch(const QUrl& url, Entry& entry);
    void remove(const QUrl& url);
    void prune();

    const std::shared_ptr<TimeSource> timeSource_;
    mutable std::mutex mutex_;
    QHash<QUrl, Entry> responses_;
    std::map<quint64, QUrl> uses_; // oldest use first
    quint64 useCount_ = 0;
    qint64 memoryCapacity_;
    qint64 totalDataSize_ = 0;
};

} // namespace quenby
