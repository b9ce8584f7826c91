#include "oauth2/NetworkLossWatch.h"

#include <utility>

namespace quenby {

NetworkLossWatch::NetworkLossWatch(std::shared_ptr<HostReachability> reachability,
                                   std::shared_ptr<TimeSource> timeSource, std::function<void()> networkLost,
                                   std::function<void()> networkFound)
    : reachability_(std::move(reachability))
    , timeSource_(std::move(timeSource))
    , networkLost_(std::move(networkLost))
    , networkFound_(std::move(networkFound)) {}

void NetworkLossWatch::start(const QString& host, std::chrono::milliseconds timeout) {
    stop();
    hasNotifiedNetworkLoss_ = false;
    timeout_ = timeout;
    if (timeout > std::chrono::milliseconds::zero())
        watch_ = reachability_->watchHost(host, [this](bool isReachable) { reachabilityChanged(isReachable); });
}

void NetworkLossWatch::stop() {
    networkLossTimer_.reset();
    watch_.reset();
}

void NetworkLossWatch::reachabilityChanged(bool isReachable) {
    if (!isReachable) {
        if (!networkLossTimer_ && !hasNotifiedNetworkLoss_)
            networkLossTimer_ = timeSource_->startTimer(timeout_, [this] { timerFired(); });
        return;
    }
    networkLossTimer_.reset();
    if (std::exchange(hasNotifiedNetworkLoss_, false))
        networkFound_();
}

void NetworkLossWatch::timerFired() {
    networkLossTimer_.reset();
    hasNotifiedNetworkLoss_ = true;
    networkLost_();
}

} // namespace quenby
