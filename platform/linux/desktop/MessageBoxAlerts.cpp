#include "platform/linux/desktop/MessageBoxAlerts.h"

#include "platform/linux/desktop/AlertBox.h"

#include <QPointer>
#include <QQueue>

#include <utility>

namespace quenby {

// One window's alerts, each after the one before it. Without a window, all of them at once.
class WindowAlerts final : public QObject {
public:
    WindowAlerts(QWidget* window, QObject* parent)
        : QObject(parent)
        , window_(window) {}
    ~WindowAlerts() override {
        for (QMessageBox* box : std::as_const(boxes_)) {
            box->disconnect(this);
            delete box;
        }
    }

    void add(const Alert& alert, const CompletionGate<int>& answer) {
        waiting_.enqueue({alert, answer});
        showNext();
    }

private:
    struct Waiting {
        Alert alert;
        CompletionGate<int> answer; // empty when nobody waits
    };

    void showNext() {
        while (!waiting_.isEmpty() && (!window_ || boxes_.isEmpty())) {
            const Waiting next = waiting_.dequeue();
            // Whoever asked may have given up while others were shown.
            if (!next.answer || next.answer.ticket().isPending())
                open(next);
        }
    }

    void open(const Waiting& next) {
        QMessageBox* box =
            openAlertBox(next.alert, window_, this, [answer = next.answer](int button) { answer.deliver(button); });
        boxes_.append(box);
        connect(box, &QObject::destroyed, this, [this, box] {
            boxes_.removeOne(box);
            showNext();
        });
    }

    QPointer<QWidget> window_;
    QQueue<Waiting> waiting_;
    QList<QMessageBox*> boxes_; // on the screen
};

MessageBoxAlerts::MessageBoxAlerts() = default;

MessageBoxAlerts::~MessageBoxAlerts() = default;

CompletionTicket MessageBoxAlerts::show(QWidget* window, const Alert& alert, QObject* context, Answered answered) {
    const CompletionGate<int> gate(context, std::move(answered));
    add(window, alert, gate);
    return gate.ticket();
}

void MessageBoxAlerts::show(QWidget* window, const Alert& alert) { add(window, alert, {}); }

void MessageBoxAlerts::add(QWidget* window, const Alert& alert, const CompletionGate<int>& answer) {
    QWidget* const topLevel = window ? window->window() : nullptr;
    WindowAlerts*& alerts = ofWindows_[topLevel];
    if (!alerts) {
        alerts = new WindowAlerts(topLevel, this);
        if (topLevel) {
            connect(topLevel, &QObject::destroyed, alerts, [this, topLevel] { delete ofWindows_.take(topLevel); });
        }
    }
    alerts->add(alert, answer);
}

} // namespace quenby
