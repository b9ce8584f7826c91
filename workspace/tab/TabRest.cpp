#include "workspace/tab/TabRest.h"

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto untilFrozen = 1min;
constexpr auto untilDiscarded = 4min; // from when it was last looked at

} // namespace

TabRest::TabRest(std::shared_ptr<TimeSource> timeSource, Rest rest)
    : timeSource_(std::move(timeSource))
    , rest_(std::move(rest)) {}

void TabRest::setShown(bool isShown) {
    if (std::exchange(isShown_, isShown) != isShown)
        restart();
}

void TabRest::setBusy(bool isBusy) {
    if (std::exchange(isBusy_, isBusy) != isBusy)
        restart();
}

void TabRest::restart() {
    timer_.reset();
    const bool isNeeded = isShown_ || isBusy_;
    if (isNeeded && std::exchange(lifecycle_, WebLifecycle::active) != WebLifecycle::active)
        rest_(WebLifecycle::active);
    if (isNeeded || lifecycle_ == WebLifecycle::discarded)
        return;
    timer_ = timeSource_->startTimer(untilFrozen, [this] {
        lifecycle_ = WebLifecycle::frozen;
        rest_(lifecycle_);
        timer_ = timeSource_->startTimer(untilDiscarded - untilFrozen, [this] {
            lifecycle_ = WebLifecycle::discarded;
            rest_(lifecycle_);
        });
    });
}

} // namespace quenby
