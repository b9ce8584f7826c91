#include "core/CompletionGate.h"

namespace quenby::detail {

bool GateState::cancel() {
    if (stage_.exchange(Stage::done) == Stage::done)
        return false;
    dropFunction();
    return true;
}

bool GateState::isPending() const { return stage_ != Stage::done; }

bool GateState::claim() { return advance(Stage::pending, Stage::claimed); }

bool GateState::take() { return advance(Stage::claimed, Stage::done); }

bool GateState::advance(Stage from, Stage to) { return stage_.compare_exchange_strong(from, to); }

} // namespace quenby::detail
