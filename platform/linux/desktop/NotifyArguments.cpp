#include "platform/linux/desktop/NotifyArguments.h"

#include "platform/linux/desktop/NotificationPicture.h"
#include "platform/linux/desktop/NotificationText.h"

#include <QIcon>

namespace quenby {
namespace {

const QString iconName = QStringLiteral("quenby");

QString labelOfClick(const Notification& notification) {
    for (const NotificationAction& action : notification.actions) {
        if (action.key == notification.clickKey)
            return action.label;
    }
    return {};
}

// Keys and labels in turn.
QStringList actionsFor(const Notification& notification, const NotificationServiceTraits& traits) {
    QStringList actions;
    if (!notification.clickKey.isEmpty() && !traits.drawsClickAsButton)
        actions << keyOfClick << labelOfClick(notification);
    for (const NotificationAction& action : notification.actions)
        actions << action.key << action.label;
    return actions;
}

} // namespace

bool drawsClickAsButton(const QString& serviceName) { return serviceName == QLatin1String("Xfce Notify Daemon"); }

QVariantList notifyArguments(const Notification& notification, uint replaces, const NotificationServiceTraits& traits) {
    QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("org.quenby.Quenby")},
                      {QStringLiteral("category"), QStringLiteral("transfer")}};
    const bool isInTheme = QIcon::hasThemeIcon(iconName);
    QImage picture = notification.picture;
    if (picture.isNull() && !isInTheme)
        picture = programPicture();
    if (!picture.isNull())
        hints.insert(QStringLiteral("image-data"), pictureForBus(picture));
    const int serverDecidesHowLong = -1;
    return {QStringLiteral("Quenby"), replaces,
            // For a name that it doesn't know, a service may draw the sign of a missing picture.
            isInTheme ? iconName : QString(), notificationTitle(notification.title),
            notificationBody(notification.text, traits.readsMarkup), actionsFor(notification, traits), hints,
            serverDecidesHowLong};
}

} // namespace quenby
