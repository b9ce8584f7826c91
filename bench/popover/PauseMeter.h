// The longest time for which an event loop got to nothing: somebody knocks every millisecond.
//
// Threads: the main thread.
#pragma once

#include <QSocketNotifier>

#include <chrono>

namespace quenby::bench {

class PauseMeter {
public:
    PauseMeter();
    ~PauseMeter();
    PauseMeter(const PauseMeter&) = delete;
    PauseMeter& operator=(const PauseMeter&) = delete;

    static constexpr std::chrono::milliseconds interval{1};

    void start();
    // The longest pause since the start, beyond the time between two knocks.
    std::chrono::nanoseconds stop();

private:
    void answer();

    const int timer_; // the kernel's
    QSocketNotifier notifier_;
    std::chrono::steady_clock::time_point lastAnswer_;
    std::chrono::nanoseconds longest_{0};
};

} // namespace quenby::bench
