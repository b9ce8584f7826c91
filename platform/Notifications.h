// Messages of the desktop's notification service, after the Desktop Notifications Specification.
//
// Threads: the main thread; nothing blocks and nothing is waited for. Title and text are plain text of any length: what
// looks like markup is shown as it stands, a title becomes one line, and what is too long for a glance is cut. Without
// a service, post() does nothing.
#pragma once

#include "platform/Service.h"

#include <QImage>
#include <QList>
#include <QObject>

namespace quenby {

struct NotificationAction {
    QString key;   // for the program; anything but "default", which means something to notification services
    QString label; // for people
};

struct Notification {
    // A notification takes the place of an earlier one that has the same tag. Empty: it stands for itself.
    QString tag;
    QString title;
    QString text;
    // Shown as buttons where the service has them.
    QList<NotificationAction> actions;
    // The action that a click on the notification itself invokes, of those above: where a service cannot tell of such
    // clicks, there is still its button. Empty: a click invokes nothing.
    QString clickKey;
    // What it is about, a thumbnail for example: small, because it is scaled down to what a notification has room for
    // (96 pixels) by whoever posts it. Null: the program's icon.
    QImage picture;
};

class Notifications : public QObject, public PlatformService {
    Q_OBJECT

public:
    // Answers the notification's identifier, by which the signals name it; 0 when there is no service.
    virtual quint64 post(const Notification& notification) = 0;
    virtual void withdraw(quint64 identifier) = 0;
    // Whether actions are shown as buttons; without, at most the click's can be invoked.
    virtual bool hasButtons() const = 0;

Q_SIGNALS:
    void actionInvoked(quint64 identifier, const QString& key);
    // It has left the screen; no action of it will be invoked any more.
    void closed(quint64 identifier);
};

} // namespace quenby
