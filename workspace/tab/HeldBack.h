// What a page began although nobody had asked it to, beyond what pages may: it waits for the user's leave.
#pragma once

#include "workspace/tab/WindowOpenLimit.h"

#include <functional>
#include <vector>

namespace quenby {

class HeldBack {
public:
    using Action = std::function<void()>;

    // So many may begin within a while, and so many are kept beyond that.
    explicit HeldBack(size_t most)
        : limit_(most)
        , most_(most) {}

    // Whether it may begin now; otherwise what is to be done once it is allowed is kept, unless there is a row of such
    // things already.
    bool admits(std::chrono::milliseconds now, Action onceAllowed);
    // Does what was kept, the oldest first. More may begin from now on, up to the limit.
    void allow();
    // The user did something in the page: what comes now may be an answer to it.
    void forgive() { limit_.forgive(); }

private:
    WindowOpenLimit limit_;
    const size_t most_;
    std::vector<Action> kept_;
};

} // namespace quenby
