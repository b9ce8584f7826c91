#include "workspace/tab/HeldBack.h"

#include <utility>

namespace quenby {

bool HeldBack::admits(std::chrono::milliseconds now, Action onceAllowed) {
    if (limit_.admits(now))
        return true;
    if (kept_.size() < most_)
        kept_.push_back(std::move(onceAllowed));
    return false;
}

void HeldBack::allow() {
    limit_.forgive();
    for (const Action& action : std::exchange(kept_, {}))
        action();
}

} // namespace quenby
