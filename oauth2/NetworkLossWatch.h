// Tells when a host has been out of reach for a while, and when it is back after that. Short losses tell nothing.
//
// One thread; the functions are called on it and may stop or restart the watch, not destroy it.
#pragma once

#include "core/TimeSource.h"
#include "oauth2/HostReachability.h"

namespace quenby {

class NetworkLossWatch {
public:
    NetworkLossWatch(std::shared_ptr<HostReachability> reachability, std::shared_ptr<TimeSource> timeSource,
                     std::function<void()> networkLost, std::function<void()> networkFound);

    // With a time-out of 0 or below nothing is watched.
    void start(const QString& host, std::chrono::milliseconds timeout);
    void stop();
    bool hasNotifiedNetworkLoss() const { return hasNotifiedNetworkLoss_; }

private:
    void reachabilityChanged(bool isReachable);
    void timerFired();

    const std::shared_ptr<HostReachability> reachability_;
    const std::shared_ptr<TimeSource> timeSource_;
    const std::function<void()> networkLost_;
    const std::function<void()> networkFound_;
    std::chrono::milliseconds timeout_{0};
    std::unique_ptr<HostReachability::Watch> watch_;
    std::unique_ptr<Timer> networkLossTimer_;
    bool hasNotifiedNetworkLoss_ = false;
};

} // namespace quenby
