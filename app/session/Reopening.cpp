#include "app/session/Reopening.h"

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

constexpr std::chrono::seconds firstPause(15);
constexpr std::chrono::seconds longestPause(300);

} // namespace

Reopening::Reopening(QString host, std::shared_ptr<HostReachability> reachability,
                     std::shared_ptr<TimeSource> timeSource)
    : host_(std::move(host))
    , reachability_(std::move(reachability))
    , timeSource_(std::move(timeSource))
    , pause_(firstPause) {}

void Reopening::failed() {
    tryLater();
    if (watch_)
        return;
    watch_ = reachability_->watchHost(host_, [this](bool isReachable) {
        // The pauses are for trouble at the other end; a network that comes back is told of.
        const bool wasUnreachable = std::exchange(wasUnreachable_, !isReachable);
        if (!isReachable)
            timer_.reset();
        else if (wasUnreachable)
            Q_EMIT due();
    });
}

void Reopening::succeeded() {
    watch_.reset();
    wasUnreachable_ = false;
    timer_.reset();
    pause_ = firstPause;
}

void Reopening::tryLater() {
    if (wasUnreachable_)
        return;
    timer_ = timeSource_->startTimer(pause_, [this] {
        timer_.reset();
        Q_EMIT due();
    });
    pause_ = std::min<std::chrono::milliseconds>(pause_ * 2, longestPause);
}

} // namespace quenby
