// How much a page may begin that nobody asked it for: other windows, downloads, the default browser.
#pragma once

#include <chrono>
#include <deque>

namespace quenby {

// So many within a period. Once there were more, none is admitted until it is forgiven: a page in an endless loop must
// not go on at a slower pace.
class WindowOpenLimit {
public:
    explicit WindowOpenLimit(size_t most, std::chrono::milliseconds period = std::chrono::seconds(10))
        : most_(most)
        , period_(period) {}

    // Whether one may begin at this point of TimeSource::elapsed(); then it counts.
    bool admits(std::chrono::milliseconds now);
    // The user did something, or allowed it: what was counted counts no longer.
    void forgive();

private:
    const size_t most_;
    const std::chrono::milliseconds period_;
    std::deque<std::chrono::milliseconds> begun_;
    bool isBlocked_ = false;
};

} // namespace quenby
