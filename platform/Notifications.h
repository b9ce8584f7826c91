// Messages of the desktop's notification service, after the Desktop Notifications Specification.
//
// Threads: the main thread; nothing blocks and nothing is waited for. Title and text are plain text: what looks like
// markup is shown as it stands. Without a service, post() does nothing.
#pragma once

#include "platform/Service.h"

#include <QList>
#include <QObject>

namespace quenby {

struct NotificationAction {
    QString key;   // for the program
    QString label; // for people
};

struct Notification {
    // A notification takes the place of an earlier one that has the same tag. Empty: it stands for itself.
    QString tag;
    QString title;
    QString text;
    // Shown as buttons where the service has them. The key "default" stands for a click on the notification itself.
    QList<NotificationAction> actions;
};

class Notifications : public QObject, public PlatformService {
    Q_OBJECT

public:
    // Answers the notification's identifier, by which the signals name it; 0 when there is no service.
    virtual quint64 post(const Notification& notification) = 0;
    virtual void withdraw(quint64 identifier) = 0;
    // Whether buttons are shown; without, only the default action can be invoked.
    virtual bool hasButtons() const = 0;

Q_SIGNALS:
    void actionInvoked(quint64 identifier, const QString& key);
    // It has left the screen; no action of it will be invoked any more.
    void closed(quint64 identifier);
};

} // namespace quenby
