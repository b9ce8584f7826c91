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

#include <atomic>
#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

namespace quenby {

namespace detail {

// Shared by a gate, its tickets and a delivery on its way. There is no lock: whoever brings the stage to done owns the
// function from then on.
class GateState : public Mailbox::Resident {
public:
    bool cancel();
    bool isPending() const;

protected:
    using Mailbox::Resident::Resident;

    // Claims the one delivery; false when it was claimed or cancelled before.
    bool claim();
    // On the context's thread: whether the function is to be called, which was not cancelled on the way.
    bool take();

private:
    enum class Stage : quint8 { pending, claimed, done };

    bool advance(Stage from, Stage to);
    virtual void dropFunction() = 0; // as the last thing: a capture's destructor may do anything
    void boxDidClose() override { cancel(); }

    std::atomic<Stage> stage_ = Stage::pending;
};

// What a gate knows of its function: the arguments.
template <typename... Args>
class GateFor : public GateState {
public:
    template <typename... Given>
    void deliver(Given&&... given) {
        if (!claim())
            return;
        box().post([self = shared_from_this(), this, arguments = Arguments(std::forward<Given>(given)...)]() mutable {
            if (take())
                call(std::move(arguments));
        });
    }

protected:
    using Arguments = std::tuple<std::decay_t<Args>...>;
    using GateState::GateState;

private:
    virtual void call(Arguments&& arguments) = 0;
};

// Holds the function as it is: one block of memory for each completion.
template <typename Function, typename... Args>
class BoundFunction final : public GateFor<Args...> {
public:
    BoundFunction(QObject* context, Function function)
        : GateFor<Args...>(Mailbox::forContext(context))
        , function_(std::move(function)) {}

private:
    void call(typename GateFor<Args...>::Arguments&& arguments) override {
        std::apply(*std::exchange(function_, std::nullopt), std::move(arguments));
    }
    void dropFunction() override { [[maybe_unused]] const auto dropped = std::exchange(function_, std::nullopt); }

    std::optional<Function> function_;
};

template <typename Function>
bool isEmpty(const Function&) {
    return false;
}
template <typename Signature>
bool isEmpty(const std::function<Signature>& function) {
    return !function;
}

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
    // The gate stays empty without a context or with an empty std::function.
    template <std::invocable<std::decay_t<Args>...> Callable>
    CompletionGate(QObject* context, Callable function) {
        if (!context || detail::isEmpty(function))
            return;
        state_ = std::make_shared<detail::BoundFunction<Callable, Args...>>(context, std::move(function));
        state_->moveIn();
    }

    // Whether there is a function to call at all.
    explicit operator bool() const { return state_ != nullptr; }

    // The first call wins; later ones do nothing.
    template <typename... Given>
    void deliver(Given&&... given) const {
        if (state_)
            state_->deliver(std::forward<Given>(given)...);
    }

    CompletionTicket ticket() const { return CompletionTicket(state_); }

private:
    std::shared_ptr<detail::GateFor<Args...>> state_;
};

} // namespace quenby
