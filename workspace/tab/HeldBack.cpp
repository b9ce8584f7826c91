#include "workspace/tab/HeldBack.h"

#include <utility>

namespace quenby {

bool HeldBack::admits(std::chrono::milliseconds now, Action onceAllowed) {
    if (limit_.admits(now) && (!common_ || common_->admits(now)))
        return true;
    if (kept_.size() < most_)
        kept_.push_back(std::move(onceAllowed));
    return false;
}

void HeldBack::allow() {
    forgive();
    for (const Action& action : std::exchange(kept_, {}))
        action();
}

void HeldBack::forgive() {
    limit_.forgive();
    if (common_)
        common_->forgive();
}

} // namespace quenby
