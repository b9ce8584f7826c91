// What every Notifications must do while there is a service.
#pragma once

#include "platform/Notifications.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace quenby::testing {

// The user in front of the screen.
struct NotificationsUser {
    // Opens what was shown last: by a click on it, or by its button where the service has no such clicks.
    std::function<void()> opens;
    std::function<void()> closesAll;
    // How many stand on the screen.
    std::function<int()> sees;
};

inline Notification someNotification(const QString& title, const QString& tag = {}) {
    const QString open = QStringLiteral("open");
    return {tag, title, QStringLiteral("text"), {{open, QStringLiteral("Open")}}, open, {}};
}

inline void notificationsKeepTheirContract(Notifications& notifications, const NotificationsUser& user) {
    constexpr int patience = 20'000; // ms
    QSignalSpy invoked(&notifications, &Notifications::actionInvoked);
    QSignalSpy closed(&notifications, &Notifications::closed);
    const auto closedLast = [&closed] { return closed.isEmpty() ? 0 : closed.last().first().toULongLong(); };

    // An action names its notification, which then goes.
    const quint64 first = notifications.post(someNotification(QStringLiteral("first")));
    QVERIFY(first != 0);
    QTRY_COMPARE_WITH_TIMEOUT(user.sees(), 1, patience);
    user.opens();
    QTRY_COMPARE_WITH_TIMEOUT(closedLast(), first, patience);
    QCOMPARE(invoked.size(), 1);
    QCOMPARE(invoked.first(), (QVariantList{first, QStringLiteral("open")}));

    // The same tag takes the same place; the former one is told as closed, and only once.
    const quint64 second = notifications.post(someNotification(QStringLiteral("second"), QStringLiteral("tag")));
    const quint64 third = notifications.post(someNotification(QStringLiteral("third"), QStringLiteral("tag")));
    const quint64 fourth = notifications.post(someNotification(QStringLiteral("fourth"), QStringLiteral("tag")));
    const quint64 other = notifications.post(someNotification(QStringLiteral("other"), QStringLiteral("another tag")));
    QCOMPARE(closed.size(), 1); // never from inside of a call
    QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 3, patience);
    QTRY_COMPARE_WITH_TIMEOUT(user.sees(), 2, patience);
    QCOMPARE((QSet<quint64>{closed.at(1).first().toULongLong(), closedLast()}), (QSet<quint64>{second, third}));

    // Withdrawn right after it was posted, and after it was shown.
    const quint64 hasty = notifications.post(someNotification(QStringLiteral("hasty")));
    notifications.withdraw(hasty);
    QTRY_COMPARE_WITH_TIMEOUT(closedLast(), hasty, patience);
    notifications.withdraw(fourth);
    notifications.withdraw(fourth);
    QTRY_COMPARE_WITH_TIMEOUT(closedLast(), fourth, patience);
    QTRY_COMPARE_WITH_TIMEOUT(user.sees(), 1, patience);

    user.closesAll();
    QTRY_COMPARE_WITH_TIMEOUT(closedLast(), other, patience);
    notifications.withdraw(other);
    notifications.withdraw(12'345);
    QCOMPARE(closed.size(), 6);

    // What the user closed is gone, even before it was told: the same tag makes it appear anew.
    const quint64 fifth = notifications.post(someNotification(QStringLiteral("fifth"), QStringLiteral("tag")));
    QTRY_COMPARE_WITH_TIMEOUT(user.sees(), 1, patience);
    user.closesAll();
    const quint64 sixth = notifications.post(someNotification(QStringLiteral("sixth"), QStringLiteral("tag")));
    QTRY_COMPARE_WITH_TIMEOUT(user.sees(), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(closedLast(), fifth, patience);
    notifications.withdraw(sixth);
    QTRY_COMPARE_WITH_TIMEOUT(closedLast(), sixth, patience);
    QTRY_COMPARE_WITH_TIMEOUT(user.sees(), 0, patience);
    QCOMPARE(closed.size(), 8);
    QCOMPARE(invoked.size(), 1);
}

} // namespace quenby::testing
