// How long an access token still lives, by two clocks at once.
//
// The expiration date is a wall-clock date, but the wall clock may be set while Quenby runs, and the monotonic clock
// stands still while the machine sleeps. So the moment of the token's arrival is remembered on both, and the one that
// leaves less time counts: a clock set back cannot make an expired token look fresh, and a clock set forward costs no
// more than an early refresh.
#pragma once

#include <QDateTime>

#include <chrono>
#include <optional>

namespace quenby {

class TimeSource;

class TokenLifetime {
public:
    // From now on; a time that is not above 0 counts as unknown.
    void start(std::chrono::seconds length, const TimeSource& time);
    // Nothing means unknown. The monotonic end is as far away as the date is now.
    void setExpirationDate(const std::optional<QDateTime>& date, const TimeSource& time);
    void clear() { end_.reset(); }

    std::optional<QDateTime> expirationDate() const;
    // What is left by the stricter clock, below 0 when it is over; nothing when the end is unknown.
    std::optional<std::chrono::milliseconds> remaining(const TimeSource& time) const;

private:
    struct End {
        QDateTime date;
        std::chrono::milliseconds elapsed;
    };
    std::optional<End> end_;
};

} // namespace quenby
