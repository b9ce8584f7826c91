// Which fetchers run and which wait, host by host. Pure bookkeeping: every operation costs the same however many
// fetchers there are, and nothing is called from in here.
//
// Threads: none of its own; the service guards it.
#pragma once

#include <QHash>
#include <QString>
#include <QUrl>

#include <list>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace quenby {

class GTMHTTPFetcher;

class FetcherQueue {
public:
    using Fetcher = std::shared_ptr<GTMHTTPFetcher>;

    // Whether the fetcher may run now; otherwise it waits. Of one that is known already its present state. A limit of
    // 0 means none.
    bool admit(const Fetcher& fetcher, const QUrl& url, int priority, unsigned limit);

    struct Removal {
        Fetcher removed; // null when it was not here
        std::vector<Fetcher> admitted;
    };
    // Forgets the fetcher and lets as many others of its host run as there is room for: smallest priority first, then
    // by age.
    Removal remove(const GTMHTTPFetcher& fetcher, unsigned limit);
    // All of them, running and waiting; the queue is empty afterwards.
    std::vector<Fetcher> takeAll();

    size_t size() const { return static_cast<size_t>(places_.size()); }
    size_t waitingCount() const { return waitingCount_; }
    bool isWaiting(const GTMHTTPFetcher& fetcher) const;
    std::vector<Fetcher> all() const;
    std::vector<Fetcher> withURL(const QUrl& url) const;

private:
    struct Entry;
    struct Host;
    using Line = std::list<Entry>; // the oldest first
    using Hosts = std::map<QString, Host>;

    struct Entry {
        Fetcher fetcher;
        QUrl url;
        Hosts::iterator host;
        std::optional<int> priority; // while it waits
    };
    struct Host {
        Line running;
        std::map<int, Line> waiting; // by priority; no line is empty
    };

    void waiterDidLeave(Host& host, std::map<int, Line>::iterator line);

    Hosts hosts_;
    QHash<const GTMHTTPFetcher*, Line::iterator> places_;
    size_t waitingCount_ = 0;
};

} // namespace quenby
