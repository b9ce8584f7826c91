// Messages that wait for an answer. They never block: no event loop runs inside of them.
// Threads: the main thread. An alert belongs to a window and is modal to it; without a window it stands for itself.
#pragma once

#include "core/CompletionGate.h"
#include "platform/Service.h"

#include <QStringList>

#include <functional>

class QWidget;

namespace quenby {

struct Alert {
    QString messageText;
    QString informativeText;
    QString details;     // longer, shown on demand
    QStringList buttons; // the first is the default; empty: one "OK"
};

class Alerts : public PlatformService {
public:
    // The pressed button's index; dismissing an alert presses its last button.
    using Answered = std::function<void(int button)>;

    virtual CompletionTicket show(QWidget* window, const Alert& alert, QObject* context, Answered answered) = 0;
    // For alerts that nobody waits for.
    virtual void show(QWidget* window, const Alert& alert) = 0;
};

} // namespace quenby
