#include "bench/popover/PauseMeter.h"

#include <algorithm>
#include <cstdint>

#include <sys/timerfd.h>
#include <unistd.h>

namespace quenby::bench {

PauseMeter::PauseMeter()
    : timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
    , notifier_(timer_, QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { answer(); });
}

PauseMeter::~PauseMeter() {
    notifier_.setEnabled(false);
    ::close(timer_);
}

void PauseMeter::start() {
    longest_ = {};
    lastAnswer_ = std::chrono::steady_clock::now();
    const timespec time{0, std::chrono::nanoseconds(interval).count()};
    const itimerspec times{time, time};
    ::timerfd_settime(timer_, 0, &times, nullptr);
}

std::chrono::nanoseconds PauseMeter::stop() {
    answer(); // the loop may be late again
    const itimerspec never{};
    ::timerfd_settime(timer_, 0, &never, nullptr);
    return std::max<std::chrono::nanoseconds>(longest_ - interval, std::chrono::nanoseconds(0));
}

void PauseMeter::answer() {
    std::uint64_t knocks = 0;
    (void)!::read(timer_, &knocks, sizeof knocks);
    const auto now = std::chrono::steady_clock::now();
    longest_ = std::max<std::chrono::nanoseconds>(longest_, now - lastAnswer_);
    lastAnswer_ = now;
}

} // namespace quenby::bench
