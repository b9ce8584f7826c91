// A notification in the form in which the service on the bus takes it.
#pragma once

#include "platform/Notifications.h"

#include <QVariant>

namespace quenby {

// What the notification service does, as it tells of itself.
struct NotificationServiceTraits {
    bool readsMarkup = false;
    bool hasButtons = false;
    // Draws the action of a click as one more button, and does nothing on a click.
    bool drawsClickAsButton = false;
};

// By the name that the service gives itself.
bool drawsClickAsButton(const QString& serviceName);

// The key by which services name a click on the notification itself.
inline const QString keyOfClick = QStringLiteral("default");

// The arguments of the method Notify. Replaces the notification that has this number at the service; 0: none.
// Threads: the main thread.
QVariantList notifyArguments(const Notification& notification, uint replaces, const NotificationServiceTraits& traits);

} // namespace quenby
