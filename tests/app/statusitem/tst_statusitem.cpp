// The status item's life: when it appears, how often it looks at the world, what makes a place paint, and drags.

#include "app/statusitem/StatusItem.h"
#include "app/statusitem/StatusItemPlaceSetting.h"
#include "app/statusitem/StatusItemSizing.h"
#include "core/DefaultsKeys.h"
#include "tests/app/statusitem/FakeStatusItemInputs.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeStatusItemHost.h"
#include "tests/support/ManualTimeSource.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

#include <sys/stat.h>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

struct Fixture {
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    FakeDefaults defaults;
    FakeStatusItemInputs inputs;
    QMenu menu;
    // The hosts look at the item's face, so they go first.
    std::unique_ptr<StatusItem> item;
    FakeStatusItemHosts hosts;

    explicit Fixture(std::optional<StatusItemPlace> place = StatusItemPlace::strip) {
        if (place)
            hosts.change(*place);
        item = std::make_unique<StatusItem>(hosts, defaults, inputs, time, menu, QIcon());
    }
    ~Fixture() { QObject::disconnect(&hosts, nullptr, item.get(), nullptr); }

    FakeStatusItemHost& host() { return *hosts.fake(); }
    void start() { item->createAndSetIconOfStatusBarIsInstant(u"n"); }
    int updates() { return host().updates(); }
};

} // namespace

class StatusItemTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void appearsWithTheFirstCompleteSummary() {
        Fixture fixture;
        const AccountSummary complete = fixture.inputs.summary;
        fixture.inputs.signedIn = false;
        fixture.start();
        QVERIFY(!fixture.host().face());
        fixture.inputs.signedIn = true;
        fixture.inputs.summary = {};
        fixture.time->advance(4s);
        QVERIFY(!fixture.host().face());
        fixture.inputs.summary = complete;
        fixture.time->advance(4s);
        QVERIFY(fixture.host().face() == fixture.item->view());
        QVERIFY(fixture.host().menu() == &fixture.menu);
        QCOMPARE(fixture.item->view()->displaysize(), 37U);
        QCOMPARE(fixture.host().face()->toolTip(), QStringLiteral("37% of 15 GB used"));

        // Signed out, it stays as it is, and the cycle goes on.
        const QSize size = fixture.item->view()->size();
        fixture.inputs.signedIn = false;
        fixture.inputs.summary = {};
        fixture.time->advance(8s);
        QCOMPARE(fixture.item->view()->size(), size);
        QCOMPARE(fixture.item->view()->strsize(), QStringLiteral("37%"));
        QCOMPARE(fixture.updates(), 0);
        QCOMPARE(fixture.time->pendingTimers(), 1U);
    }

    void gaugeValue_data() {
        QTest::addColumn<QString>("getBytesUsed");
        QTest::addColumn<int>("uploadPercent");
        QTest::addColumn<unsigned>("displaysize");
        QTest::newRow("share") << QStringLiteral("37%") << -1 << 37U;
        QTest::newRow("fraction") << QStringLiteral("37.9%") << -1 << 37U;
        QTest::newRow("more than there is") << QStringLiteral("130%") << -1 << 100U;
        QTest::newRow("no number") << QStringLiteral("many") << -1 << 0U;
        QTest::newRow("upload") << QStringLiteral("37%") << 0 << 0U;
        QTest::newRow("upload at its end") << QStringLiteral("37%") << 100 << 100U;
    }
    void gaugeValue() {
        Fixture fixture;
        QFETCH(QString, getBytesUsed);
        QFETCH(int, uploadPercent);
        fixture.inputs.summary.getBytesUsed = getBytesUsed;
        fixture.inputs.uploadPercent = uploadPercent;
        fixture.start();
        QTEST(fixture.item->view()->displaysize(), "displaysize");
    }

    // Which calls are scheduled after one refresh.
    void cycle_data() {
        QTest::addColumn<QString>("isInstant");
        QTest::addColumn<int>("uploadPercent");
        QTest::addColumn<bool>("icon");
        QTest::addColumn<QList<int>>("delays"); // in milliseconds
        QTest::newRow("idle") << QStringLiteral("n") << -1 << true << QList<int>{4000};
        QTest::newRow("uploading") << QStringLiteral("n") << 50 << true << QList<int>{500};
        QTest::newRow("almost done") << QStringLiteral("n") << 99 << true << QList<int>{100, 500};
        QTest::newRow("almost done, nothing shown") << QStringLiteral("n") << 99 << false << QList<int>{100, 500};
        QTest::newRow("once") << QStringLiteral("y") << -1 << true << QList<int>{};
        QTest::newRow("once while uploading") << QStringLiteral("y") << 98 << true << QList<int>{};
        QTest::newRow("once, almost done") << QStringLiteral("y") << 100 << true << QList<int>{100};
    }
    void cycle() {
        QFETCH(QString, isInstant);
        QFETCH(int, uploadPercent);
        QFETCH(bool, icon);
        QFETCH(QList<int>, delays);
        Fixture fixture;
        fixture.defaults.setValueForKey(QStringLiteral("showMenubarIcon"), icon);
        fixture.inputs.uploadPercent = uploadPercent;
        fixture.item->createAndSetIconOfStatusBarIsInstant(isInstant);
        QCOMPARE(fixture.time->pendingTimers(), size_t(delays.size()));
        QCOMPARE(int(fixture.time->nextDelay().count()), delays.value(0));
        // However long it goes on, the calls do not multiply.
        fixture.time->advance(3s);
        QVERIFY(fixture.time->pendingTimers() <= 2);
    }

    void paintsOnlyWhatChanged() {
        Fixture fixture;
        fixture.defaults.setValueForKey(QStringLiteral("showUsegeText"), true);
        fixture.start();
        fixture.time->advance(60s);
        QCOMPARE(fixture.updates(), 0);

        fixture.inputs.uploadPercent = 40;
        fixture.time->advance(4s);
        QCOMPARE(fixture.updates(), 1);
        QVERIFY(fixture.host().face()->toolTip().startsWith(QStringLiteral("Uploading: 40%")));
        fixture.inputs.uploadPercent = 41;
        fixture.time->advance(500ms);
        QCOMPARE(fixture.updates(), 2);
        fixture.inputs.uploadPercent = 100;
        fixture.time->advance(500ms);
        fixture.inputs.uploadPercent = -1;
        fixture.time->advance(100ms);
        QCOMPARE(fixture.updates(), 4);
        QCOMPARE(fixture.item->view()->displaysize(), 37U);

        fixture.inputs.popoverVisible = true;
        fixture.item->redisplay();
        fixture.item->redisplay();
        QCOMPARE(fixture.updates(), 5);
    }

    void settingsShowAtOnce() {
        Fixture fixture;
        fixture.start();
        const qreal text = widthOfString(QStringLiteral("37%"), statusItemFont());
        QCOMPARE(fixture.item->view()->look().width, text + 17);
        fixture.defaults.setValueForKey(QStringLiteral("showMenubarIcon"), true);
        QCOMPARE(fixture.item->view()->look().width, text + 5);
        QCOMPARE(fixture.updates(), 1);
        fixture.defaults.setValueForKey(QStringLiteral("notificationDisplay"), true);
        QCOMPARE(fixture.updates(), 1);
        QCOMPARE(fixture.time->pendingTimers(), 1U);

        // A tray shows the gauge alone: these settings change nothing there.
        fixture.hosts.change(StatusItemPlace::tray);
        fixture.defaults.setValueForKey(QStringLiteral("showMenubarIcon"), false);
        fixture.defaults.setValueForKey(QStringLiteral("showUsegeText"), true);
        QCOMPARE(fixture.updates(), 0);
    }

    void followsThePlace() {
        Fixture fixture(std::nullopt); // no place at all at first
        QSignalSpy clicked(fixture.item.get(), &StatusItem::statusItemClicked);
        fixture.start();
        QVERIFY(fixture.item->view() && fixture.item->geometry().isEmpty());
        for (const StatusItemPlace place : {StatusItemPlace::tray, StatusItemPlace::strip, StatusItemPlace::tray}) {
            fixture.hosts.change(place);
            QVERIFY(fixture.host().face() == fixture.item->view());
            QCOMPARE(fixture.item->geometry(), fixture.host().geometry());
            clicked.clear();
            Q_EMIT fixture.host().clicked();
            QCOMPARE(clicked.count(), 1);
        }
    }

    void clicks() {
        Fixture fixture;
        fixture.start();
        QSignalSpy middle(fixture.item.get(), &StatusItem::statusItemMiddleClicked);
        Q_EMIT fixture.host().middleClicked();
        QCOMPARE(middle.count(), 1);
        fixture.menu.addAction(QStringLiteral("One"));
        Q_EMIT fixture.host().menuRequested({40, 30});
        QTRY_VERIFY(fixture.menu.isVisible());
        QCOMPARE(fixture.menu.pos(), QPoint(40, 30));
        fixture.menu.close();
    }

    void drags_data() {
        QTest::addColumn<QStringList>("names"); // in the folder; "sub" is a folder
        QTest::addColumn<bool>("taken");
        QTest::newRow("file") << QStringList{QStringLiteral("file")} << true;
        QTest::newRow("folder") << QStringList{QStringLiteral("sub")} << false;
        QTest::newRow("folder and file") << QStringList{QStringLiteral("sub"), QStringLiteral("file")} << true;
        QTest::newRow("link to a file") << QStringList{QStringLiteral("link")} << true;
        QTest::newRow("pipe") << QStringList{QStringLiteral("pipe")} << false;
        QTest::newRow("not there") << QStringList{QStringLiteral("missing")} << false;
        QTest::newRow("nothing") << QStringList{} << false;
    }
    void drags();

    void aDragEndsWithItsPlace() {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        Fixture fixture;
        fixture.start();
        QVERIFY(fixture.host().drag({QFile::encodeName(file.fileName())}));
        QVERIFY(fixture.item->view()->look().drag);
        fixture.hosts.change(StatusItemPlace::tray);
        QVERIFY(!fixture.item->view()->look().drag);
    }

    void itStandsWhereTheSettingSays() {
        using Place = StatusItemPlace;
        const QString key = defaultsKey::statusItemPlace;
        FakeDefaults defaults;
        FakeStatusItemHosts hosts;
        FakeStatusItemHosts decided;
        defaults.setValueForKey(key, QStringLiteral("strip"));
        const StatusItemPlaceSetting setting(hosts, defaults, StatusItemPlaceSetting::DecidedBy::setting);
        const StatusItemPlaceSetting idle(decided, defaults, StatusItemPlaceSetting::DecidedBy::commandLine);
        QVERIFY(hosts.chosen == Place::strip);
        defaults.setValueForKey(key, QStringLiteral("tray"));
        QVERIFY(hosts.chosen == Place::tray);
        defaults.setValueForKey(QStringLiteral("other"), QStringLiteral("strip"));
        QVERIFY(hosts.chosen == Place::tray);
        for (const QVariant& none : {QVariant(QStringLiteral("Tray")), QVariant(1), QVariant(QVariantMap())}) {
            defaults.setValueForKey(key, QStringLiteral("strip"));
            defaults.setValueForKey(key, none);
            QVERIFY(!hosts.chosen);
        }
        QVERIFY(!decided.chosen);
    }
};

void StatusItemTest::drags() {
    QFETCH(QStringList, names);
    QFETCH(bool, taken);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("sub")));
    QVERIFY(QFile::link(file.fileName(), folder.filePath(QStringLiteral("link"))));
    QCOMPARE(::mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    QList<QByteArray> paths;
    for (const QString& name : names)
        paths.append(QFile::encodeName(folder.filePath(name)));

    Fixture fixture;
    fixture.start();
    QSignalSpy entered(fixture.item.get(), &StatusItem::dragEntered);
    QList<QList<QByteArray>> dropped;
    connect(fixture.item.get(), &StatusItem::filesDropped, this,
            [&dropped](const QList<QByteArray>& files) { dropped.append(files); });
    QCOMPARE(fixture.host().drag(paths), taken);
    QCOMPARE(entered.count(), int(taken));
    QCOMPARE(fixture.item->view()->look().drag, taken);
    QCOMPARE(fixture.updates(), int(taken));

    // A drop is judged anew: the place may have taken it for other reasons.
    Q_EMIT fixture.host().dropped(paths);
    Q_EMIT fixture.host().dragEnded();
    QCOMPARE(dropped, taken ? QList<QList<QByteArray>>{paths} : QList<QList<QByteArray>>{});
    QVERIFY(!fixture.item->view()->look().drag);
}

QTEST_MAIN(StatusItemTest)
#include "tst_statusitem.moc"
