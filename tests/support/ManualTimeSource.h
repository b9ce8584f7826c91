// Time that stands still until a test moves it.
#pragma once

#include "core/TimeSource.h"

#include <map>

namespace quenby::testing {

// One thread only. Timers run from inside advance(), in order of their due time.
class ManualTimeSource final : public TimeSource {
public:
    QDateTime now() const override { return wall_; }
    std::chrono::milliseconds elapsed() const override { return elapsed_; }

    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> function) override {
        const Key key{elapsed_ + delay, ++lastNumber_};
        timers_->emplace(key, std::move(function));
        return std::make_unique<Handle>(timers_, key);
    }

    // Both clocks go forward, and what is due runs.
    void advance(std::chrono::milliseconds by) {
        const auto end = elapsed_ + by;
        while (!timers_->empty() && timers_->begin()->first.first <= end) {
            const auto [due, function] = *timers_->begin();
            timers_->erase(timers_->begin());
            wall_ = wall_.addMSecs((due.first - elapsed_).count());
            elapsed_ = due.first;
            function();
        }
        wall_ = wall_.addMSecs((end - elapsed_).count());
        elapsed_ = end;
    }

    // The wall clock alone jumps, as when somebody sets it.
    void jumpWallClock(std::chrono::milliseconds by) { wall_ = wall_.addMSecs(by.count()); }

    size_t pendingTimers() const { return timers_->size(); }
    // How long until the next timer is due; 0 when none waits.
    std::chrono::milliseconds nextDelay() const {
        return timers_->empty() ? std::chrono::milliseconds(0) : timers_->begin()->first.first - elapsed_;
    }

private:
    using Key = std::pair<std::chrono::milliseconds, quint64>; // when it is due, and a number of its own
    using Timers = std::map<Key, std::function<void()>>;

    class Handle final : public Timer {
    public:
        Handle(std::shared_ptr<Timers> timers, Key key)
            : timers_(std::move(timers))
            , key_(key) {}
        ~Handle() override { timers_->erase(key_); }

    private:
        std::shared_ptr<Timers> timers_;
        Key key_;
    };

    QDateTime wall_ = QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC);
    std::chrono::milliseconds elapsed_{0};
    std::shared_ptr<Timers> timers_ = std::make_shared<Timers>();
    quint64 lastNumber_ = 0;
};

} // namespace quenby::testing
