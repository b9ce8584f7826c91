// What a page began although nobody had asked it to, beyond what pages may: it waits for the user's leave.
#pragma once

#include "workspace/tab/WindowOpenLimit.h"

#include <functional>
#include <memory>
#include <vector>

namespace quenby {

class HeldBack {
public:
    using Action = std::function<void()>;

    // So many may begin within a while, and so many are kept beyond that. What counts for others as well counts for the
    // common limit, when there is one, too.
    explicit HeldBack(size_t most, std::shared_ptr<WindowOpenLimit> common = nullptr)
        : limit_(most)
        , most_(most)
        , common_(std::move(common)) {}

    // Whether it may begin now; otherwise what is to be done once it is allowed is kept, unless there is a row of such
    // things already.
    bool admits(std::chrono::milliseconds now, Action onceAllowed);
    // Does what was kept, the oldest first. More may begin from now on, up to the limit.
    void allow();
    // The user did something in the page: what comes now may be an answer to it.
    void forgive();

private:
    WindowOpenLimit limit_;
    const size_t most_;
    const std::shared_ptr<WindowOpenLimit> common_;
    std::vector<Action> kept_;
};

} // namespace quenby
