// What time it is where the changes' dates come from. Dates of the server are compared with the server's own time, so
// that a clock of this computer that goes wrong, or is set, neither hides changes nor brings up old ones.
//
// Threads: one.
#pragma once

#include "core/TimeSource.h"

#include <memory>
#include <optional>

namespace quenby {

class ServerClock {
public:
    explicit ServerClock(std::shared_ptr<TimeSource> timeSource)
        : timeSource_(std::move(timeSource)) {}

    // The server has just said what time it is. An invalid date says nothing.
    void heard(const QDateTime& date);
    // This computer's time as long as nothing was heard.
    QDateTime now() const;

private:
    struct Heard {
        QDateTime date;
        QDateTime wall; // this computer's time, and its elapsed time, at that moment
        std::chrono::milliseconds elapsed;
    };

    const std::shared_ptr<TimeSource> timeSource_;
    std::optional<Heard> heard_;
};

} // namespace quenby
