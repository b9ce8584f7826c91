#include "http/FetcherQueue.h"

#include <iterator>

namespace quenby {
namespace {

QString hostOf(const QUrl& url) {
    const QString host = url.host();
    return host.isEmpty() && url.isLocalFile() ? QStringLiteral("localhost") : host;
}

} // namespace

bool FetcherQueue::admit(const Fetcher& fetcher, const QUrl& url, int priority, unsigned limit) {
    if (places_.contains(fetcher.get()))
        return !isWaiting(*fetcher);
    const auto host = hosts_.try_emplace(hostOf(url)).first;
    const bool mayRun = limit == 0 || host->second.running.size() < limit;
    Line& line = mayRun ? host->second.running : host->second.waiting[priority];
    line.push_back({fetcher, url, host, mayRun ? std::nullopt : std::optional(priority)});
    places_.insert(fetcher.get(), std::prev(line.end()));
    waitingCount_ += mayRun ? 0 : 1;
    return mayRun;
}

FetcherQueue::Removal FetcherQueue::remove(const GTMHTTPFetcher& fetcher, unsigned limit) {
    Removal removal;
    const auto place = places_.constFind(&fetcher);
    if (place == places_.constEnd())
        return removal;
    const Line::iterator entry = *place;
    places_.erase(place);
    removal.removed = std::move(entry->fetcher);
    const auto known = entry->host;
    Host& host = known->second;
    if (!entry->priority) {
        host.running.erase(entry);
    } else {
        const auto line = host.waiting.find(*entry->priority);
        line->second.erase(entry);
        waiterDidLeave(host, line);
    }
    while (!host.waiting.empty() && (limit == 0 || host.running.size() < limit)) {
        const auto line = host.waiting.begin();
        Entry& next = line->second.front();
        next.priority.reset();
        removal.admitted.push_back(next.fetcher);
        host.running.splice(host.running.end(), line->second, line->second.begin());
        waiterDidLeave(host, line);
    }
    if (host.running.empty())
        hosts_.erase(known);
    return removal;
}

void FetcherQueue::waiterDidLeave(Host& host, std::map<int, Line>::iterator line) {
    --waitingCount_;
    if (line->second.empty())
        host.waiting.erase(line);
}

std::vector<FetcherQueue::Fetcher> FetcherQueue::takeAll() {
    std::vector<Fetcher> taken = all();
    places_.clear();
    hosts_.clear();
    waitingCount_ = 0;
    return taken;
}

bool FetcherQueue::isWaiting(const GTMHTTPFetcher& fetcher) const {
    const auto place = places_.constFind(&fetcher);
    return place != places_.constEnd() && (*place)->priority;
}

std::vector<FetcherQueue::Fetcher> FetcherQueue::all() const {
    std::vector<Fetcher> found;
    found.reserve(size());
    for (const Line::iterator& entry : places_)
        found.push_back(entry->fetcher);
    return found;
}

std::vector<FetcherQueue::Fetcher> FetcherQueue::withURL(const QUrl& url) const {
    std::vector<Fetcher> found;
    for (const Line::iterator& entry : places_) {
        if (entry->url == url)
            found.push_back(entry->fetcher);
    }
    return found;
}

} // namespace quenby
