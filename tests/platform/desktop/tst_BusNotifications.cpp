// Notifications on a real notification service, which comes and goes; and the fake beside it.
#include "platform/linux/desktop/BusNotifications.h"
#include "tests/platform/contracts/NotificationsContract.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeNotifications.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace quenby;
using namespace quenby::testing;

namespace {

QByteArray service(const QStringList& arguments) { return outputOf(QStringLiteral("dunstctl"), arguments); }

// What the service remembers of the last notification that was closed: "summary", "body", "appname", "category".
QString lastInHistory(const QString& key) {
    const QJsonObject history = QJsonDocument::fromJson(service({QStringLiteral("history")})).object();
    const QJsonArray entries = history[QLatin1String("data")][0].toArray();
    return entries.at(0)[key][QLatin1String("data")].toString();
}

const NotificationsUser realUser{
    [] {
        // As a click does with the settings of the virtual desktop.
        service({QStringLiteral("action")});
        service({QStringLiteral("close")});
    },
    [] { service({QStringLiteral("close-all")}); },
    [] {
        return service({QStringLiteral("count"), QStringLiteral("displayed")}).toInt();
    },
};

} // namespace

class tst_BusNotifications : public QObject {
    Q_OBJECT

    DesktopPart part_{QStringLiteral("notifications")};

private Q_SLOTS:
    void init() { part_.start(QStringLiteral("dunst")); }

    void theFakeKeepsTheContract() {
        FakeNotifications fake;
        const auto last = [&fake] { return fake.onScreen().last().identifier; };
        notificationsKeepTheirContract(fake, {[&] { fake.invoke(last(), QStringLiteral("default")); },
                                              [&] {
                                                  while (!fake.onScreen().isEmpty())
                                                      fake.userCloses(last());
                                              },
                                              [&] { return static_cast<int>(fake.onScreen().size()); }});
    }

    void theServiceKeepsTheContract() {
        BusNotifications notifications;
        notificationsKeepTheirContract(notifications, realUser);
        QVERIFY(notifications.hasButtons());
        QCOMPARE(notifications.unavailableBecause(), QString());
    }

    void whatLooksLikeMarkupIsShownAsItStands() {
        BusNotifications notifications;
        QSignalSpy closed(&notifications, &Notifications::closed);
        const QString odd = QStringLiteral("<b>Bold</b> & <i>\"new\"</i>.txt");
        notifications.post({{}, odd, QStringLiteral(" \n ") + odd + QStringLiteral(" added"), {}});
        QTRY_COMPARE_WITH_TIMEOUT(realUser.sees(), 1, 20'000);
        realUser.closesAll();
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 1, 20'000);
        QCOMPARE(lastInHistory(QStringLiteral("summary")), odd);
        // This service keeps the body in the form in which it is drawn, which is markup.
        QCOMPARE(lastInHistory(QStringLiteral("body")),
                 QStringLiteral("&lt;b&gt;Bold&lt;/b&gt; &amp; &lt;i&gt;\"new\"&lt;/i&gt;.txt added"));
        QCOMPARE(lastInHistory(QStringLiteral("appname")), QStringLiteral("Quenby"));
        QCOMPARE(lastInHistory(QStringLiteral("category")), QStringLiteral("transfer"));
    }

    void aServiceThatGoesTakesItsNotificationsAlong() {
        BusNotifications notifications;
        QSignalSpy closed(&notifications, &Notifications::closed);
        const quint64 shown = notifications.post(someNotification(QStringLiteral("shown"), QStringLiteral("tag")));
        QTRY_COMPARE_WITH_TIMEOUT(realUser.sees(), 1, 20'000);
        part_.end();
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 1, 20'000);
        QCOMPARE(closed.first().first().toULongLong(), shown);
        QTRY_VERIFY_WITH_TIMEOUT(!notifications.unavailableBecause().isEmpty(), 20'000);
        QCOMPARE(notifications.post(someNotification(QStringLiteral("nowhere"))), quint64(0));

        part_.start(QStringLiteral("dunst"));
        QTRY_COMPARE_WITH_TIMEOUT(notifications.unavailableBecause(), QString(), 20'000);
        QVERIFY(notifications.post(someNotification(QStringLiteral("again"), QStringLiteral("tag"))) != 0);
        QTRY_COMPARE_WITH_TIMEOUT(realUser.sees(), 1, 20'000);
        realUser.closesAll();
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 2, 20'000);
    }

    void withoutAServiceNothingIsPosted() {
        part_.end();
        BusNotifications early; // before it is known that there is none
        QSignalSpy closed(&early, &Notifications::closed);
        const quint64 lost = early.post(someNotification(QStringLiteral("lost")));
        QTRY_COMPARE_WITH_TIMEOUT(early.unavailableBecause().isEmpty(), false, 20'000);
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), lost == 0 ? 0 : 1, 20'000);
        QCOMPARE(early.post(someNotification(QStringLiteral("nowhere"))), quint64(0));

        BusNotifications withoutBus(QDBusConnection(QStringLiteral("a bus that is not there")));
        QVERIFY(withoutBus.unavailableBecause().contains(QLatin1String("D-Bus")));
        QCOMPARE(withoutBus.post(someNotification(QStringLiteral("nowhere"))), quint64(0));
    }
};

QTEST_GUILESS_MAIN(tst_BusNotifications)
#include "tst_BusNotifications.moc"
