#include "core/CompletionGate.h"

namespace quenby::detail {

std::shared_ptr<GateState> GateState::create(QObject* context, std::shared_ptr<void> function) {
    const auto state = std::make_shared<GateState>();
    state->function_ = std::move(function);
    state->mailbox_ = Mailbox::forContext(context, [weak = std::weak_ptr(state)] {
        if (const auto living = weak.lock())
            living->cancel();
    });
    return state;
}

bool GateState::cancel() {
    std::shared_ptr<void> dropped; // destroyed after the lock: a capture's destructor may do anything
    const std::lock_guard lock(mutex_);
    if (stage_ == Stage::done)
        return false;
    stage_ = Stage::done;
    dropped.swap(function_);
    return true;
}

bool GateState::isPending() const {
    const std::lock_guard lock(mutex_);
    return stage_ != Stage::done;
}

bool GateState::claim() {
    const std::lock_guard lock(mutex_);
    if (stage_ != Stage::pending)
        return false;
    stage_ = Stage::claimed;
    return true;
}

std::shared_ptr<void> GateState::take() {
    const std::lock_guard lock(mutex_);
    if (stage_ != Stage::claimed)
        return nullptr;
    stage_ = Stage::done;
    return std::exchange(function_, nullptr);
}

void GateState::post(std::function<void()> delivery) { mailbox_->post(std::move(delivery)); }

} // namespace quenby::detail
