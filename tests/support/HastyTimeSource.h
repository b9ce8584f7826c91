// Real time in a hurry: a minute of the program's time passes in about a second, so that back-off and patience are
// played as they are, against real programs.
#pragma once

#include "core/TimeSource.h"

namespace quenby::testing {

class HastyTimeSource final : public TimeSource {
public:
    static constexpr int factor = 50;

    QDateTime now() const override { return start_.addMSecs((elapsed() - begun_).count()); }
    std::chrono::milliseconds elapsed() const override { return system_->elapsed() * factor; }
    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> function) override {
        return system_->startTimer(delay / factor, std::move(function));
    }

private:
    const std::shared_ptr<TimeSource> system_ = makeSystemTimeSource();
    const std::chrono::milliseconds begun_ = system_->elapsed() * factor;
    const QDateTime start_ = system_->now();
};

} // namespace quenby::testing
