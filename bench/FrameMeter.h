// How late the frames of an interface are drawn: 60 a second are due, and each is drawn by the main thread's event loop
// when it gets to it.
//
// Threads: the main thread.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <functional>
#include <vector>

namespace quenby {

class FrameMeter : public QObject {
    Q_OBJECT

public:
    // What is drawn belongs to the frame: it is in time when its picture is finished before the next frame is due.
    explicit FrameMeter(std::function<void()> draw);
    ~FrameMeter() override;

    static constexpr std::chrono::nanoseconds frameTime{16'666'667};

    void start();
    void stop();

    // Milliseconds from the moment each frame was due until it was drawn. Frames that became due while the loop was
    // busy are drawn together, and each of them counts.
    const std::vector<double>& lateness() const { return lateness_; }

private:
    void drawDue();

    const std::function<void()> draw_;
    const int timer_; // the kernel's: the toolkit's timers know no fractions of a millisecond
    QSocketNotifier notifier_;
    std::chrono::steady_clock::time_point nextDue_;
    std::vector<double> lateness_;
};

// The figures of a measurement, a line each: "PREFIXframes 1234".
void printLateness(const char* prefix, std::vector<double> lateness);

} // namespace quenby
