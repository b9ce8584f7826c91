#include "http/StallWatch.h"

#include <algorithm>

namespace quenby {

StallWatch::StallWatch(std::chrono::milliseconds limit, std::function<qint64()> unacknowledged,
                       std::function<void()> stalled)
    : limit_(limit)
    , unacknowledged_(std::move(unacknowledged))
    , stalled_(std::move(stalled)) {
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
}

void StallWatch::start() {
    if (limit_.count() <= 0)
        return;
    hasMoved_ = true;
    look();
}

// Four looks within the limit, so that the answer comes at most a quarter of it late.
void StallWatch::look() {
    const qint64 unacknowledged = unacknowledged_();
    if (hasMoved_ || unacknowledged != lastUnacknowledged_)
        sinceProgress_.start();
    hasMoved_ = false;
    lastUnacknowledged_ = unacknowledged;
    const auto still = std::chrono::milliseconds(sinceProgress_.elapsed());
    if (still >= limit_)
        stalled_();
    else
        timer_.start(
            std::clamp(limit_ - still, std::chrono::milliseconds(1), limit_ / 4 + std::chrono::milliseconds(1)));
}

} // namespace quenby
