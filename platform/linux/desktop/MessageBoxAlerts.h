// Alerts as message boxes: modal to their window and never more than one of them at a time; independent of any window
// when they have none, or one that is not on the screen.
#pragma once

#include "platform/Alerts.h"

#include <QHash>
#include <QObject>

namespace quenby {

class WindowAlerts;

class MessageBoxAlerts final : public QObject, public Alerts {
    Q_OBJECT

public:
    MessageBoxAlerts();
    // Closes what is open; nothing is answered any more.
    ~MessageBoxAlerts() override;

    CompletionTicket show(QWidget* window, const Alert& alert, QObject* context, Answered answered) override;
    void show(QWidget* window, const Alert& alert) override;

private:
    void add(QWidget* window, const Alert& alert, const CompletionGate<int>& answer);

    QHash<const QWidget*, WindowAlerts*> ofWindows_; // by top-level window; children of this object
};

} // namespace quenby
