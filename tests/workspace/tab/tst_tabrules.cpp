// The rules of a tab that need no page.
#include "platform/BrowserView.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/tab/HeldBack.h"
#include "workspace/tab/IconFile.h"
#include "workspace/tab/PageTitle.h"
#include "workspace/tab/TabRest.h"
#include "workspace/tab/ZoomSteps.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

class TestTabRules final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void titles_data() {
        QTest::addColumn<QString>("said");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char* said, const char* shown) {
            QTest::newRow(said) << QString::fromLatin1(said) << QString::fromLatin1(shown);
        };
        row("Plan - Google Docs", "Plan");
        row("Sketch - Google Drawings (2)", "Sketch (2)");
        row("a - Google Docs - Google Drive", "a");
        row(" - Google Drive", "");
        // The order counts: what the later name leaves behind is not looked at again.
        row("x - Google - Google Docs Drive", "x - Google Drive");
    }
    void titles() {
        QFETCH(QString, said);
        QFETCH(QString, shown);
        QCOMPARE(pageTitle(said), shown);
    }

    // Up through all sizes and back again, with the rounding that an engine's float has.
    void zoomSteps() {
        qreal factor = 0.25;
        int steps = 0;
        while (zoomedIn(factor) > factor) {
            const qreal larger = zoomedIn(factor);
            QCOMPARE(qRound(zoomedOut(static_cast<float>(larger)) * 100), qRound(factor * 100));
            factor = larger;
            ++steps;
        }
        QCOMPARE(factor, 5.0);
        QCOMPARE(steps, 16);
        QCOMPARE(zoomedOut(0.25), 0.25);
        QCOMPARE(zoomedIn(1.03), 1.1); // a size that is none of the usual
        QCOMPARE(zoomedOut(1.03), 1.0);
    }

    void endlessRow() {
        HeldBack row(3);
        int done = 0;
        const auto count = [&done] { ++done; };
        const auto begin = [&](std::chrono::milliseconds now) { return row.admits(now, count); };
        QVERIFY(begin(0s) && begin(1s) && begin(2s));
        // Once it was too much, waiting does not help.
        QVERIFY(!begin(3s) && !begin(60s) && !begin(120s) && !begin(121s) && !begin(122s));
        QCOMPARE(done, 0);
        row.allow();
        QCOMPARE(done, 3); // not all of an endless row
        QVERIFY(begin(123s) && begin(124s) && begin(125s) && !begin(126s));
        row.forgive(); // and slowly enough is no row
        QVERIFY(begin(127s) && begin(131s) && begin(135s) && begin(139s) && begin(143s));
    }

    // A page in one tab after another that opens the next: each has a row of its own, and there is an end all the same.
    void rowsInCommon() {
        const auto common = std::make_shared<WindowOpenLimit>(4);
        HeldBack first(3, common);
        HeldBack second(3, common);
        HeldBack third(3, common);
        QVERIFY(first.admits(0s, {}) && first.admits(0s, {}) && first.admits(0s, {}) && second.admits(0s, {}));
        QVERIFY(!second.admits(1s, [] {}) && !third.admits(60s, [] {}));
        third.allow();
        QVERIFY(third.admits(61s, {}));
    }

    void rest() {
        const auto time = std::make_shared<ManualTimeSource>();
        QList<WebLifecycle> told;
        TabRest rest(time, [&told](WebLifecycle lifecycle) { told.append(lifecycle); });
        QCOMPARE(time->pendingTimers(), size_t{0});
        rest.setShown(false);
        time->advance(59s);
        QVERIFY(told.isEmpty());
        rest.setBusy(true); // a download: its time begins anew when that has ended
        time->advance(10min);
        QVERIFY(told.isEmpty());
        QCOMPARE(time->pendingTimers(), size_t{0});
        rest.setBusy(false);
        time->advance(60s);
        QCOMPARE(told, QList{WebLifecycle::frozen});
        QCOMPARE(time->pendingTimers(), size_t{1});
        time->advance(3min);
        QCOMPARE(told, (QList{WebLifecycle::frozen, WebLifecycle::discarded}));
        QCOMPARE(time->pendingTimers(), size_t{0});
        rest.setShown(true);
        QCOMPARE(told.takeLast(), WebLifecycle::active);
    }

    void iconFiles() {
        QTemporaryDir folder;
        QImage icon(16, 16, QImage::Format_ARGB32);
        icon.fill(Qt::darkGreen);
        QFile taken(folder.filePath(QStringLiteral("7.png")));
        QVERIFY(taken.open(QIODevice::WriteOnly) && taken.write("mine") == 4);
        taken.close();
        quint32 number = 6;
        const auto next = [&number] { return ++number; };
        QVERIFY(writeIconFile(folder.path(), icon, next));
        QFile written(folder.filePath(QStringLiteral("8.png")));
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QByteArray bytes = written.readAll();
        QVERIFY2(bytes.startsWith("II*") || bytes.startsWith("MM"), "the data is TIFF, whatever the name says");
        QCOMPARE(QImage::fromData(bytes).pixelColor(3, 3), QColor(Qt::darkGreen));
        QVERIFY(taken.open(QIODevice::ReadOnly));
        QCOMPARE(taken.readAll(), QByteArray("mine"));

        // Every number is taken, and the folder is not there: nothing but a line in the log.
        QVERIFY(!writeIconFile(folder.path(), icon, [] { return 7U; }));
        QVERIFY(!writeIconFile(folder.filePath(QStringLiteral("none")), icon, next));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }
};

QTEST_MAIN(TestTabRules)
#include "tst_tabrules.moc"
