// Alerts that nobody sees. The test answers them when it likes.
#pragma once

#include "platform/Alerts.h"

#include <QPointer>
#include <QWidget>

#include <utility>

namespace quenby::testing {

class FakeAlerts final : public Alerts {
public:
    struct Shown {
        QPointer<QWidget> window;
        Alert alert;
        CompletionGate<int> answer; // empty when nobody waits
    };

    CompletionTicket show(QWidget* window, const Alert& alert, QObject* context, Answered answered) override {
        shown_.append({window, alert, CompletionGate<int>(context, std::move(answered))});
        return shown_.last().answer.ticket();
    }
    void show(QWidget* window, const Alert& alert) override { shown_.append({window, alert, {}}); }

    // Everything that was shown, answered or not.
    const QList<Shown>& shown() const { return shown_; }
    void forgetShown() {
        shown_.clear();
        answered_ = 0;
    }
    // How many wait for the user; one window's are answered in the order in which they were shown.
    qsizetype waiting() const { return shown_.size() - answered_; }

    // Presses a button of the oldest alert that waits; the answer arrives through the event loop. False: none waits.
    bool answer(int button) {
        if (waiting() == 0)
            return false;
        shown_.at(answered_++).answer.deliver(button);
        return true;
    }

private:
    QList<Shown> shown_;
    qsizetype answered_ = 0;
};

} // namespace quenby::testing
