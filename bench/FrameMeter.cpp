#include "bench/FrameMeter.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include <sys/timerfd.h>
#include <unistd.h>

namespace quenby {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

timespec timespecOf(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return {seconds.count(), (time - seconds).count()};
}

double share(size_t part, size_t whole) {
    return whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

} // namespace

FrameMeter::FrameMeter(std::function<void()> draw)
    : draw_(std::move(draw))
    , timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
    , notifier_(timer_, QSocketNotifier::Read) {
    connect(&notifier_, &QSocketNotifier::activated, this, &FrameMeter::drawDue);
}

FrameMeter::~FrameMeter() {
    notifier_.setEnabled(false);
    ::close(timer_);
}

void FrameMeter::start() {
    lateness_.clear();
    nextDue_ = std::chrono::steady_clock::now() + frameTime; // the same clock as the timer's
    const itimerspec times{timespecOf(frameTime), timespecOf(nextDue_.time_since_epoch())};
    ::timerfd_settime(timer_, TFD_TIMER_ABSTIME, &times, nullptr);
}

void FrameMeter::stop() {
    drawDue(); // those that the loop has not got to
    const itimerspec never{};
    ::timerfd_settime(timer_, 0, &never, nullptr);
}

void FrameMeter::drawDue() {
    std::uint64_t due = 0;
    if (::read(timer_, &due, sizeof due) != sizeof due)
        return;
    draw_();
    const auto drawn = std::chrono::steady_clock::now();
    for (; due > 0; --due, nextDue_ += frameTime)
        lateness_.push_back(Milliseconds(drawn - nextDue_).count());
}

void printLateness(const char* prefix, std::vector<double> lateness) {
    std::sort(lateness.begin(), lateness.end());
    const size_t count = lateness.size();
    const auto late = std::upper_bound(lateness.begin(), lateness.end(), Milliseconds(FrameMeter::frameTime).count());
    std::printf("%sframes %zu\n", prefix, count);
    std::printf("%sin_time_percent %.3f\n", prefix, share(static_cast<size_t>(late - lateness.begin()), count));
    std::printf("%sp99_ms %.3f\n", prefix, count == 0 ? 0 : lateness[(count - 1) * 99 / 100]);
    std::printf("%sworst_ms %.3f\n", prefix, count == 0 ? 0 : lateness.back());
}

} // namespace quenby
