// The small parts of the desktop program's composition.

#include "app/agent/DefaultsTable.h"
#include "app/agent/HandoverLines.h"
#include "app/agent/UploadListing.h"
#include "core/DefaultsKeys.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/window/UploadRows.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

class AgentPartsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void firstValues() {
        FakeDefaults defaults;
        defaults.setValueForKey(u"notificationDisplay"_s, false);
        QVERIFY(CheckDefaultsValue(defaults));
        QVERIFY(!defaults.boolForKey(u"notificationDisplay"_s, true)); // a NO that was chosen stays
        for (const QString& key : {u"launchAtLogin"_s, u"screenshotShare"_s, u"showMenubarIcon"_s, u"showUsegeText"_s})
            QVERIFY2(defaults.contains(key) && !defaults.boolForKey(key, true), qPrintable(key));
        QCOMPARE(defaults.keys().size(), 5);
        defaults.setValueForKey(u"showUsegeText"_s, true);
        QVERIFY(!CheckDefaultsValue(defaults)); // only once is it the first time
        QVERIFY(defaults.boolForKey(u"showUsegeText"_s));

        FakeDefaults fresh;
        CheckDefaultsValue(fresh);
        QVERIFY(fresh.boolForKey(u"notificationDisplay"_s));
    }

    void handoverComesBack() {
        const QList<QByteArray> files{"/home/a b", "/home/caf\xE9", "/home/file x"};
        QCOMPARE(filesFromHandover(handoverFromFiles(files)), files);
        // Of another version: nothing is taken for something else.
        QCOMPARE(filesFromHandover({"rubbish", "", "upload x", "files", "file /a"}), QList<QByteArray>{"/a"});
    }

    void uploadsAreListed() {
        const auto time = std::make_shared<ManualTimeSource>();
        DestinationFolders folders([] { return nullptr; }, time, {});
        UploadQueue queue([] { return nullptr; }, folders, time, {});
        UploadRows rows;
        const UploadListing listing(queue, rows);
        const auto text = [&rows](int row, int role) { return rows.data(rows.index(row), role).toString(); };
        UploadRequest one{.path = "/tmp/caf\xE9.mov"};
        one.number = 1;
        UploadRequest two{.path = "/tmp/two"};
        two.number = 2;
        Q_EMIT queue.started(one);
        Q_EMIT queue.started(two);
        QCOMPARE(rows.rowCount(), 2);
        QVERIFY(text(0, Qt::DisplayRole).contains(u"caf"_s));
        QCOMPARE(text(0, UploadRows::percentRole), u"-1"_s);

        // Only what can be seen is shown again.
        QSignalSpy shown(&rows, &UploadRows::dataChanged);
        constexpr qint64 total = 10485760;
        for (qint64 sent = 0; sent <= total; sent += 1024)
            Q_EMIT queue.progressed(one, sent, total);
        QCOMPARE(shown.size(), 101);
        QCOMPARE(text(0, UploadRows::percentRole), u"100"_s);
        QCOMPARE(text(0, UploadRows::detailRole), u"10 MB of 10 MB"_s);
        Q_EMIT queue.progressed(two, 0, 0); // an empty file is there at once
        QCOMPARE(text(1, UploadRows::percentRole), u"100"_s);

        Q_EMIT queue.troubled(one, Error(URLErrorCode::timedOut, {{errorKey::reason, u"nobody answers"_s}}));
        QVERIFY(text(0, UploadRows::detailRole).contains(u"nobody answers"_s));
        Q_EMIT queue.progressed(one, total, total); // the same step as before the trouble
        QCOMPARE(text(0, UploadRows::detailRole), u"10 MB of 10 MB"_s);
        Q_EMIT queue.finished(one, Error(URLErrorCode::timedOut));
        QCOMPARE(rows.rowCount(), 1);
        Q_EMIT queue.removed(two.number); // cancelled
        QCOMPARE(rows.rowCount(), 0);
    }
};

QTEST_GUILESS_MAIN(AgentPartsTest)
#include "tst_agentparts.moc"
