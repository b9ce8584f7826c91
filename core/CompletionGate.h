// The one way in which a completion reaches its caller.
//
// A gate binds a function to a QObject, its context. The function runs on the context's thread, at most once, never
// from inside the call that started the work (delivery always goes through the event loop), and never after the
// ticket was cancelled or the context died.
//
// Threads: deliver() and cancel() may be called from any thread. A gate is made while the context is known to be
// alive; the context must not be moved to another thread afterwards. cancel() on the context's thread is final: the
// function will not run. On another thread it answers whether it came in time.
#pragma once

#include "core/Mailbox.h"

#include <functional>
#include <memory>
#include <mutex>
#include <tuple>
#include <utility>

namespace quenby {

namespace detail {

// Shared by a gate, its tickets and a delivery on its way.
class GateState : public std::enable_shared_from_this<GateState> {
public:
    static std::shared_ptr<GateState> create(QObject* context, std::shared_ptr<void> function);

    bool cancel();
    bool isPending() const;
    // Claims the one delivery; false when it was claimed or cancelled before.
    bool claim();
    // On the context's thread: the function to call, or nothing when it was cancelled on the way.
    std::shared_ptr<void> take();
    void post(std::function<void()> delivery);

private:
    enum class Stage { pending, claimed, done };

    mutable std::mutex mutex_;
    Stage stage_ = Stage::pending;
    std::shared_ptr<void> function_;
    std::shared_ptr<Mailbox> mailbox_;
};

} // namespace detail

// Cancels a completion that has not run yet. Copies mean the same completion; an empty ticket does nothing.
class CompletionTicket {
public:
    CompletionTicket() = default;
    explicit CompletionTicket(std::shared_ptr<detail::GateState> state)
        : state_(std::move(state)) {}

    // Whether this call is the reason that the function will never run.
    bool cancel() const { return state_ && state_->cancel(); }
    // Whether the function may still run.
    bool isPending() const { return state_ && state_->isPending(); }

private:
    std::shared_ptr<detail::GateState> state_;
};

template <typename... Args>
class CompletionGate {
public:
    using Function = std::function<void(Args...)>;

    CompletionGate() = default;
    CompletionGate(QObject* context, Function function) {
        if (!context || !function)
            return;
        state_ = detail::GateState::create(context, std::make_shared<Function>(std::move(function)));
    }

    // Whether there is a function to call at all.
    explicit operator bool() const { return state_ != nullptr; }

    // The first call wins; later ones do nothing.
    template <typename... Given>
    void deliver(Given&&... given) const {
        if (!state_ || !state_->claim())
            return;
        state_->post(
            [state = state_, arguments = std::tuple<std::decay_t<Args>...>(std::forward<Given>(given)...)]() mutable {
                if (const auto function = std::static_pointer_cast<Function>(state->take()))
                    std::apply(*function, std::move(arguments));
            });
    }

    CompletionTicket ticket() const { return CompletionTicket(state_); }

private:
    std::shared_ptr<detail::GateState> state_;
};

} // namespace quenby
