// When a failed fetch is tried again, and after how long: delays start between one and two seconds and double up to a
// maximum. A value; intervals are seconds.
#pragma once

#include "core/Error.h"
#include "http/HeaderFields.h"

#include <QDateTime>

#include <chrono>
#include <optional>

namespace quenby {

class RetryPolicy {
public:
    static constexpr double unsetInterval = -1.0;

    bool isEnabled() const { return enabled_; }
    // Turning retry on puts every number below back to its start value.
    void setEnabled(bool enabled);

    // A value not above 0 picks an interval between one and two seconds, so that clients that failed together do not
    // come back together.
    void setMinRetryInterval(double seconds);
    double minRetryInterval() const { return minRetryInterval_; }
    // A value not above 0 leaves the maximum unset.
    void setMaxRetryInterval(double seconds) { maxRetryInterval_ = seconds > 0 ? seconds : unsetInterval; }
    double maxRetryInterval() const { return maxRetryInterval_; }
    // A maximum that is still unset becomes one minute for requests that only read and ten for the others.
    void chooseMaxRetryInterval(bool isReadOnlyRequest);
    void setRetryFactor(double factor) { retryFactor_ = factor; }
    double retryFactor() const { return retryFactor_; }
    double lastRetryInterval() const { return lastRetryInterval_; }
    double nextRetryInterval() const;

    // Whether one more retry lies within the limits, this long after the first attempt.
    bool allowsRetry(std::chrono::milliseconds sinceFirstAttempt) const;
    // The delay before the next attempt, remembered for the one after it. What the server asked for is a lower bound
    // of it as long as it lies below the maximum; a server that asks for more is asked again earlier.
    std::chrono::milliseconds takeDelay(std::optional<double> retryAfter);

    // Whether trying again may help at all: 408, 503, 504, a time-out or a lost connection.
    static bool isRetryError(const Error& error);

private:
    bool enabled_ = false;
    double minRetryInterval_ = 0;
    double maxRetryInterval_ = 0;
    double retryFactor_ = 0;
    double lastRetryInterval_ = 0;
};

// What a Retry-After field asks for (RFC 9110, section 10.2.3), as seconds from now; nothing when it is absent,
// unreadable or in the past.
std::optional<double> retryAfterSeconds(const HeaderFields& headers, const QDateTime& now);

} // namespace quenby
