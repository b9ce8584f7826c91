// A keyring in memory that behaves as a test tells it.
#pragma once

#include "platform/Keyring.h"

#include <QList>

#include <algorithm>
#include <deque>

namespace quenby::testing {

class FakeKeyring final : public Keyring {
public:
    enum class State {
        available,
        locked,  // calls wait until the state changes or dismissUnlock()
        missing, // calls end with `unavailable`
        failing, // calls end with `failed`
    };
    struct Call {
        enum class Kind { read, write, remove };

        Kind kind;
        KeyringItem item;
        QByteArray data; // of a write

        friend bool operator==(const Call&, const Call&) = default;
    };

    CompletionTicket read(const KeyringItem& item, QObject* context, Read read) override {
        const CompletionGate<Result<QByteArray>> gate(context, std::move(read));
        calls_.append({Call::Kind::read, item, {}});
        perform([this, item, gate](const MaybeError& error) {
            const auto found = find(item);
            if (error)
                gate.deliver(Result<QByteArray>(*error));
            else if (found == items_.end())
                gate.deliver(Result<QByteArray>(problem(KeyringErrorCode::itemNotFound)));
            else
                gate.deliver(Result<QByteArray>(found->second));
        });
        return gate.ticket();
    }

    CompletionTicket write(const KeyringItem& item, const QByteArray& data, QObject* context, Done done) override {
        const CompletionGate<MaybeError> gate(context, std::move(done));
        calls_.append({Call::Kind::write, item, data});
        perform([this, item, data, gate](const MaybeError& error) {
            if (!error)
                setItem(item, data);
            gate.deliver(error);
        });
        return gate.ticket();
    }

    CompletionTicket remove(const KeyringItem& item, QObject* context, Done done) override {
        const CompletionGate<MaybeError> gate(context, std::move(done));
        calls_.append({Call::Kind::remove, item, {}});
        perform([this, item, gate](const MaybeError& error) {
            if (const auto found = find(item); !error && found != items_.end())
                items_.erase(found);
            gate.deliver(error);
        });
        return gate.ticket();
    }

    QString unavailableBecause() const override {
        return state_ == State::missing ? QStringLiteral("There is no keyring.") : QString();
    }

    // Calls that waited for an unlock go on, or end as the new state has it; then becameAvailable() where it did.
    void setState(State state) {
        const bool wasAway = state_ == State::locked || state_ == State::missing;
        state_ = state;
        runWaiting();
        if (wasAway && state == State::available)
            Q_EMIT becameAvailable();
    }
    // The user closes the window that asks for the password: the calls that wait for it end with `locked`.
    void dismissUnlock() { endWaiting(problem(KeyringErrorCode::locked)); }
    // The keyring goes away in the middle of what it does; setState() brings it back.
    void vanish() {
        state_ = State::missing;
        endWaiting(problem(KeyringErrorCode::unavailable));
    }

    // Between hold() and release() nothing is done and nobody is answered.
    void hold() { isHeld_ = true; }
    void release() {
        isHeld_ = false;
        runWaiting();
    }

    // What is stored; setting it is no call.
    std::optional<QByteArray> item(const KeyringItem& item) const {
        const auto found =
            std::find_if(items_.begin(), items_.end(), [&](const auto& one) { return one.first == item; });
        return found == items_.end() ? std::nullopt : std::optional(found->second);
    }
    void setItem(const KeyringItem& item, const QByteArray& data) {
        if (const auto found = find(item); found != items_.end())
            found->second = data;
        else
            items_.append({item, data});
    }
    const QList<Call>& calls() const { return calls_; }
    int waitingCalls() const { return static_cast<int>(waiting_.size()); }

private:
    using Work = std::function<void(const MaybeError& error)>;

    static Error problem(KeyringErrorCode code) {
        return Error(keyringErrorDomain, static_cast<qint64>(code),
                     {{errorKey::reason, QStringLiteral("The keyring did not do it.")}});
    }
    QList<std::pair<KeyringItem, QByteArray>>::iterator find(const KeyringItem& item) {
        return std::find_if(items_.begin(), items_.end(), [&](const auto& one) { return one.first == item; });
    }

    void perform(Work work) {
        waiting_.push_back(std::move(work));
        runWaiting();
    }
    void runWaiting() {
        while (!isHeld_ && state_ != State::locked && !waiting_.empty()) {
            const Work work = std::move(waiting_.front());
            waiting_.pop_front();
            if (state_ == State::available)
                work({});
            else
                work(problem(state_ == State::missing ? KeyringErrorCode::unavailable : KeyringErrorCode::failed));
        }
    }
    void endWaiting(const Error& error) {
        for (const Work& work : std::exchange(waiting_, {}))
            work(error);
    }

    State state_ = State::available;
    bool isHeld_ = false;
    std::deque<Work> waiting_;
    QList<std::pair<KeyringItem, QByteArray>> items_;
    QList<Call> calls_;
};

} // namespace quenby::testing
