// Alerts about uploads that failed: never more than one at a time. What fails while one is open is told together by the
// next. Threads: the main thread.
#pragma once

#include "platform/Alerts.h"

#include <QObject>

#include <deque>

namespace quenby {

// The window that sheets belong to; null when there is none.
using WindowProvider = std::function<QWidget*()>;

class FailureAlerts : public QObject {
    Q_OBJECT

public:
    FailureAlerts(Alerts& alerts, WindowProvider window);

    // The detail, which may be empty, is a line of its own. Alerts of the same title are told together.
    void tell(const QString& title, const QString& info, const QString& detail);

private:
    struct Pending {
        QString title;
        QStringList infos; // each once
        QStringList details;
        int omitted = 0; // details beyond what anyone would read
    };

    void showNext();

    Alerts& alerts_;
    const WindowProvider window_;
    std::deque<Pending> pending_; // by title
    bool isOpen_ = false;
};

} // namespace quenby
