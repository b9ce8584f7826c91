// Where time comes from. Everything that waits or compares dates takes one of these, so that a rule of sixty seconds
// is tested in milliseconds and a clock that jumps can be played.
#pragma once

#include <QDateTime>

#include <chrono>
#include <functional>
#include <memory>

namespace quenby {

// A running one-shot timer. Destroying it cancels it.
class Timer {
public:
    virtual ~Timer() = default;
};

class TimeSource {
public:
    virtual ~TimeSource() = default;

    // The wall clock in UTC. It may jump either way; only dates that people or servers see are taken from it.
    virtual QDateTime now() const = 0;

    // A clock that only goes forward, for measuring how long something took. Its zero means nothing.
    virtual std::chrono::milliseconds elapsed() const = 0;

    // Calls the function once on the calling thread's event loop, not before the delay has passed.
    virtual std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> function) = 0;
};

// The machine's own clocks and Qt's timers.
std::shared_ptr<TimeSource> makeSystemTimeSource();

} // namespace quenby
