#include "core/TimeSource.h"

#include <QTimer>

namespace quenby {
namespace {

class SystemTimer final : public Timer {
public:
    SystemTimer(std::chrono::milliseconds delay, std::function<void()> function) {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        // A copy runs: the function may destroy this timer.
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [function = std::move(function)] {
            const auto running = function;
            running();
        });
        timer_.start(delay);
    }

private:
    QTimer timer_;
};

class SystemTimeSource final : public TimeSource {
public:
    QDateTime now() const override { return QDateTime::currentDateTimeUtc(); }

    std::chrono::milliseconds elapsed() const override {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    }

    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> function) override {
        return std::make_unique<SystemTimer>(delay, std::move(function));
    }
};

} // namespace

std::shared_ptr<TimeSource> makeSystemTimeSource() { return std::make_shared<SystemTimeSource>(); }

} // namespace quenby
