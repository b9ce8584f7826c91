// How fast something moves, and the words for it. Nothing here writes or looks at a clock.
#pragma once

#include <QString>

#include <chrono>
#include <deque>

namespace quenby {

// The rate over the last seconds. Times come from TimeSource::elapsed().
class RateMeter {
public:
    void add(std::chrono::milliseconds now, qint64 totalBytes);
    double bytesPerSecond() const; // 0 while nothing is known

private:
    struct Sample {
        std::chrono::milliseconds time;
        qint64 bytes;
    };
    std::deque<Sample> samples_;
};

struct Progress {
    QString name;
    qint64 done = 0; // bytes
    qint64 total = 0;
    double bytesPerSecond = 0;

    int percent() const;
};

// "0:42", "12:05" or "3:01:07"; "-:--" when it cannot be told.
QString timeLeftText(const Progress& progress);

// One line of at most so many columns: name, bar, percent, rate, time left. A narrow terminal loses the bar first,
// then the rate and the time.
QString progressLine(const Progress& progress, int columns);

} // namespace quenby
