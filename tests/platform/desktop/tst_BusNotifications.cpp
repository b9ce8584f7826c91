// Notifications on real notification services of two kinds, which come and go; and the fake beside them.
#include "platform/linux/desktop/BusNotifications.h"
#include "platform/linux/desktop/NotificationPicture.h"
#include "tests/platform/contracts/NotificationsContract.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/support/Settled.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIcon>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>
#include <QRect>
#include <QScreen>
#include <QTemporaryDir>

#include <algorithm>

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

const NotificationsUser dunstUser{
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

// This service has a window for each notification, and no command for them: they are clicked.
QList<QByteArray> xfceNotices() {
    const QByteArray found =
        outputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                             QStringLiteral("--class"), QStringLiteral("xfce4-notifyd")});
    return found.isEmpty() ? QList<QByteArray>() : found.split('\n');
}

// Where the notice is that came first; empty when there is none.
QRect xfceNotice() {
    const QList<QByteArray> notices = xfceNotices();
    if (notices.isEmpty())
        return {};
    QHash<QByteArray, int> numbers;
    for (const QByteArray& line :
         outputOf(QStringLiteral("xdotool"), {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"),
                                              QString::fromLatin1(notices.first())})
             .split('\n'))
        numbers[line.left(line.indexOf('='))] = line.mid(line.indexOf('=') + 1).toInt();
    return {numbers["X"], numbers["Y"], numbers["WIDTH"], numbers["HEIGHT"]};
}

QRect settledXfceNotice() {
    QRect before;
    const bool isSettled = settles([&before] {
        const QRect now = xfceNotice();
        return !now.isEmpty() && now == std::exchange(before, now);
    });
    return isSettled ? before : QRect();
}

const NotificationsUser xfceUser{
    // The last button, in the lower right corner.
    [] { clickAt(settledXfceNotice().bottomRight() - QPoint(40, 30)); },
    [] {
        QVERIFY(QTest::qWaitFor(
            [] {
                const QRect notice = xfceNotice();
                if (!notice.isEmpty())
                    clickAt(notice.topLeft() + QPoint(15, 15));
                return xfceNotices().isEmpty();
            },
            20'000));
    },
    [] { return static_cast<int>(xfceNotices().size()); },
};

QImage pictureOf(Qt::GlobalColor colour, const QSize& size = {40, 40}) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(colour);
    return picture;
}

// Whether the screen shows an area of this colour, about as large as an icon.
bool isOnScreen(Qt::GlobalColor colour) {
    const QImage screen =
        QGuiApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
    const QRgb wanted = QColor(colour).rgb();
    qsizetype found = 0;
    for (int y = 0; y < screen.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(screen.constScanLine(y));
        found += std::count(line, line + screen.width(), wanted);
    }
    return found > 500;
}

} // namespace

class tst_BusNotifications : public QObject {
    Q_OBJECT

    DesktopPart part_{QStringLiteral("notifications")};
    QString kind_ = QStringLiteral("dunst");
    QTemporaryDir noIcons_;

    // The former must have left the bus before another can take its name.
    void useService(const QString& kind) {
        if (kind != std::exchange(kind_, kind) && part_.isRunning()) {
            BusNotifications probe;
            part_.end();
            QTRY_VERIFY_WITH_TIMEOUT(!probe.unavailableBecause().isEmpty(), 20'000);
        }
        part_.start(kind);
    }

private Q_SLOTS:
    void initTestCase() { QIcon::setThemeSearchPaths({noIcons_.path()}); }
    void init() { useService(QStringLiteral("dunst")); }

    void theFakeKeepsTheContract() {
        FakeNotifications fake;
        const auto last = [&fake] { return fake.onScreen().last().identifier; };
        notificationsKeepTheirContract(fake, {[&] { fake.click(last()); },
                                              [&] {
                                                  while (!fake.onScreen().isEmpty())
                                                      fake.userCloses(last());
                                              },
                                              [&] { return static_cast<int>(fake.onScreen().size()); }});
    }

    void theServiceKeepsTheContract() {
        BusNotifications notifications;
        notificationsKeepTheirContract(notifications, dunstUser);
        QVERIFY(notifications.hasButtons());
        QCOMPARE(notifications.unavailableBecause(), QString());
    }

    void theServiceWithoutClicksKeepsTheContract() {
        useService(QStringLiteral("xfce4-notifyd"));
        BusNotifications notifications;
        notificationsKeepTheirContract(notifications, xfceUser);
        QVERIFY(notifications.hasButtons());

        // It draws a button for each action that it is told of: a click is not one of them.
        Notification notification = someNotification(QStringLiteral("with a click"), QStringLiteral("tag"));
        notifications.post(notification);
        const QSize withClick = settledXfceNotice().size();
        xfceUser.closesAll();
        notification.clickKey.clear();
        notifications.post(notification);
        QVERIFY(!withClick.isEmpty());
        QCOMPARE(settledXfceNotice().size(), withClick);
        xfceUser.closesAll();
    }

    void pictures_data() {
        QTest::addColumn<QString>("service");
        QTest::newRow("dunst") << QStringLiteral("dunst");
        QTest::newRow("xfce4-notifyd") << QStringLiteral("xfce4-notifyd");
    }
    void pictures() {
        QFETCH(QString, service);
        useService(service);
        QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(pictureOf(Qt::cyan, {64, 64}))));
        BusNotifications notifications;
        Notification notification = someNotification(QStringLiteral("the program's icon"), QStringLiteral("tag"));
        notifications.post(notification);
        QVERIFY(settles([] { return isOnScreen(Qt::cyan); }));
        notification.picture = pictureOf(Qt::magenta, {3000, 2000});
        const quint64 last = notifications.post(notification);
        QVERIFY(settles([] { return isOnScreen(Qt::magenta) && !isOnScreen(Qt::cyan); }));
        notifications.withdraw(last);
        QVERIFY(settles([] { return !isOnScreen(Qt::magenta); }));
    }

    void arguments() {
        QGuiApplication::setWindowIcon({});
        Notification notification = someNotification(QStringLiteral("title"));
        const auto pictureSent = [&notification] {
            const QVariantMap hints = notifyArguments(notification, 0, {}).at(6).toMap();
            return hints[QStringLiteral("image-data")];
        };
        QVERIFY(!pictureSent().isValid());
        notification.picture = pictureOf(Qt::red, {3000, 1000});
        const auto picture = pictureSent().value<BusPicture>();
        QCOMPARE(QSize(picture.width, picture.height), QSize(96, 32));
        QCOMPARE(picture.pixels, QByteArray("\xFF\0\0\xFF", 4).repeated(96 * 32));
        QCOMPARE(picture.rowLength, 96 * 4);

        // The theme has an icon of our name: the service draws that one.
        QTemporaryDir themes;
        QVERIFY(QDir(themes.path()).mkpath(QStringLiteral("hicolor/48x48/apps")));
        QFile index(themes.filePath(QStringLiteral("hicolor/index.theme")));
        QVERIFY(index.open(QIODevice::WriteOnly));
        index.write("[Icon Theme]\nName=Hicolor\nDirectories=48x48/apps\n[48x48/apps]\nSize=48\n");
        index.close();
        QVERIFY(pictureOf(Qt::green).save(themes.filePath(QStringLiteral("hicolor/48x48/apps/quenby.png"))));
        QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(pictureOf(Qt::cyan))));
        notification.picture = {};
        QVERIFY(notifyArguments(notification, 0, {}).at(2).toString().isEmpty() && pictureSent().isValid());
        QIcon::setThemeSearchPaths({themes.path()});
        QCOMPARE(notifyArguments(notification, 0, {}).at(2).toString(), QStringLiteral("quenby"));
        QVERIFY(!pictureSent().isValid());
        QIcon::setThemeSearchPaths({noIcons_.path()});
    }

    void whatLooksLikeMarkupIsShownAsItStands() {
        BusNotifications notifications;
        QSignalSpy closed(&notifications, &Notifications::closed);
        const QString odd = QStringLiteral("<b>Bold</b> & <i>\"new\"</i>.txt");
        Notification notification = someNotification(odd);
        notification.text = QStringLiteral(" \n ") + odd + QStringLiteral(" added");
        notifications.post(notification);
        QTRY_COMPARE_WITH_TIMEOUT(dunstUser.sees(), 1, 20'000);
        dunstUser.closesAll();
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
        QTRY_COMPARE_WITH_TIMEOUT(dunstUser.sees(), 1, 20'000);
        part_.end();
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 1, 20'000);
        QCOMPARE(closed.first().first().toULongLong(), shown);
        QTRY_VERIFY_WITH_TIMEOUT(!notifications.unavailableBecause().isEmpty(), 20'000);
        QCOMPARE(notifications.post(someNotification(QStringLiteral("nowhere"))), quint64(0));

        part_.start(QStringLiteral("dunst"));
        QTRY_COMPARE_WITH_TIMEOUT(notifications.unavailableBecause(), QString(), 20'000);
        QVERIFY(notifications.post(someNotification(QStringLiteral("again"), QStringLiteral("tag"))) != 0);
        QTRY_COMPARE_WITH_TIMEOUT(dunstUser.sees(), 1, 20'000);
        dunstUser.closesAll();
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

QTEST_MAIN(tst_BusNotifications)
#include "tst_BusNotifications.moc"
