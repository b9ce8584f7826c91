// How long to go on after failures, and how long to wait before the next try: twice as long each time up to half a
// minute, and from the start again as soon as something was gained.
#pragma once

#include "core/TimeSource.h"

#include <chrono>
#include <memory>
#include <optional>

namespace quenby {

class Patience {
public:
    Patience(std::shared_ptr<TimeSource> timeSource, std::chrono::milliseconds limit)
        : timeSource_(std::move(timeSource))
        , limit_(limit) {}

    // One more failure with so much gained so far (bytes that the server is known to hold). Whether to go on.
    bool failed(qint64 gained);
    // The time until the next try, for a caller that goes on.
    std::chrono::milliseconds nextDelay();

    std::chrono::milliseconds limit() const { return limit_; }

private:
    std::shared_ptr<TimeSource> timeSource_;
    std::chrono::milliseconds limit_;
    std::optional<std::chrono::milliseconds> troubledSince_;
    qint64 gainedBefore_ = 0;
    int tries_ = 0;
};

} // namespace quenby
