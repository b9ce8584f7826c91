#include "workspace/tab/WindowOpenLimit.h"

namespace quenby {

bool WindowOpenLimit::admits(std::chrono::milliseconds now) {
    while (!begun_.empty() && begun_.front() + period_ <= now)
        begun_.pop_front();
    isBlocked_ = isBlocked_ || begun_.size() >= most_;
    if (isBlocked_)
        return false;
    begun_.push_back(now);
    return true;
}

void WindowOpenLimit::forgive() {
    begun_.clear();
    isBlocked_ = false;
}

} // namespace quenby
