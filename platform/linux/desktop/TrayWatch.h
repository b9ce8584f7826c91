// Knows whether there is a tray of one kind, without asking again and again.
//
// Threads: the main thread.
#pragma once

#include <QObject>

#include <utility>

namespace quenby {

// The two protocols that trays speak.
enum class TrayKind { statusNotifier, xEmbed };

class TrayWatch : public QObject {
    Q_OBJECT

public:
    enum class State { unknown, absent, there };

    virtual TrayKind kind() const = 0;
    State state() const { return state_; }

Q_SIGNALS:
    // The state is another than before.
    void changed();

protected:
    void setState(State state) {
        if (std::exchange(state_, state) != state)
            Q_EMIT changed();
    }

private:
    State state_ = State::unknown;
};

} // namespace quenby
