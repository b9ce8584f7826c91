// The feed's own clock: its next poll comes when it is asked for, and it is known when it waits for that.
//
// Threads: the main thread.
#pragma once

#include "core/TimeSource.h"

namespace quenby::bench {

class FeedClock final : public TimeSource {
public:
    QDateTime now() const override { return system_->now(); }
    std::chrono::milliseconds elapsed() const override { return system_->elapsed(); }
    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds, std::function<void()> function) override {
        ++endedPolls_;
        poll_ = std::move(function);
        return std::make_unique<Timer>();
    }

    int endedPolls() const { return endedPolls_; }
    void pollNow() { std::exchange(poll_, {})(); }

private:
    const std::shared_ptr<TimeSource> system_ = makeSystemTimeSource();
    std::function<void()> poll_;
    int endedPolls_ = 0;
};

} // namespace quenby::bench
