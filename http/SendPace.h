// Keeps a body from going out faster than it may: says how much of it may be read now, and when to ask again.
//
// Not libcurl's own limit: that one takes the mean since the exchange began, so that a limit which is set later would
// make it wait for as long as it was too fast before.
//
// Threads: one, with an event loop.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <functional>

namespace quenby {

class SendPace {
public:
    // goOn is called through the event loop when there is something to take again for one who was given nothing.
    explicit SendPace(std::function<void()> goOn);

    // Bytes per second; 0: no limit. Counts at once.
    void setSpeed(qint64 bytesPerSecond);
    // How many of the wanted bytes (at least one) may go now; they count as gone. 0: none, wait for goOn.
    qint64 take(qint64 wanted);

private:
    void refill();

    const std::function<void()> goOn_;
    qint64 speed_ = 0;
    double ready_ = 0; // bytes that may go
    QElapsedTimer sinceRefill_;
    QTimer timer_;
};

} // namespace quenby
