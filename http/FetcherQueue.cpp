#include "http/FetcherQueue.h"

namespace quenby {

QString FetcherQueue::hostOf(const QUrl& url) {
    const QString host = url.host();
    return host.isEmpty() && url.isLocalFile() ? QStringLiteral("localhost") : host;
}

bool FetcherQueue::admit(const Fetcher& fetcher, const QUrl& url, int priority, unsigned limit) {
    const auto [known, isNew] = entries_.try_emplace(fetcher.get());
    Entry& entry = known->second;
    if (!isNew)
        return !entry.turn;
    entry = {fetcher, url, hostOf(url), std::nullopt};
    Host& host = hosts_[entry.host];
    if (limit == 0 || host.running < limit) {
        ++host.running;
        return true;
    }
    entry.turn = Turn(priority, ++lastNumber_);
    host.waiting.emplace(*entry.turn, fetcher.get());
    ++waitingCount_;
    return false;
}

FetcherQueue::Removal FetcherQueue::remove(const GTMHTTPFetcher& fetcher, unsigned limit) {
    Removal removal;
    const auto node = entries_.extract(&fetcher);
    if (node.empty())
        return removal;
    const Entry& entry = node.mapped();
    removal.removed = entry.fetcher;
    const auto host = hosts_.find(entry.host);
    if (entry.turn) {
        host->waiting.erase(*entry.turn);
        --waitingCount_;
    } else {
        --host->running;
    }
    while (!host->waiting.empty() && (limit == 0 || host->running < limit)) {
        Entry& next = entries_.at(host->waiting.begin()->second);
        host->waiting.erase(host->waiting.begin());
        next.turn.reset();
        --waitingCount_;
        ++host->running;
        removal.admitted.push_back(next.fetcher);
    }
    if (host->running == 0 && host->waiting.empty())
        hosts_.erase(host);
    return removal;
}

std::vector<FetcherQueue::Fetcher> FetcherQueue::takeAll() {
    std::vector<Fetcher> taken = all();
    entries_.clear();
    hosts_.clear();
    waitingCount_ = 0;
    return taken;
}

bool FetcherQueue::isWaiting(const GTMHTTPFetcher& fetcher) const {
    const auto found = entries_.find(&fetcher);
    return found != entries_.end() && found->second.turn;
}

std::vector<FetcherQueue::Fetcher> FetcherQueue::all() const {
    std::vector<Fetcher> found;
    found.reserve(entries_.size());
    for (const auto& [key, entry] : entries_)
        found.push_back(entry.fetcher);
    return found;
}

std::vector<FetcherQueue::Fetcher> FetcherQueue::withURL(const QUrl& url) const {
    std::vector<Fetcher> found;
    for (const auto& [key, entry] : entries_) {
        if (entry.url == url)
            found.push_back(entry.fetcher);
    }
    return found;
}

} // namespace quenby
