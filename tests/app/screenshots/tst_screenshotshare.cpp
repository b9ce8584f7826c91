// Which screenshots are uploaded, and which never are.
#include "app/agent/DefaultsTable.h"
#include "app/screenshots/ScreenshotShare.h"
#include "core/FolderBookmark.h"
#include "platform/linux/session/IniDefaults.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeScreenshotQuery.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms
const QDateTime launch(QDate(2026, 11, 23), QTime(10, 0), Qt::UTC);

QVariantMap bookmarkOf(const QString& folder) {
    return {{defaultsKey::path, folder},
            {defaultsKey::bookmarkData, makeFolderBookmark(QFile::encodeName(folder)).valueOr({})}};
}

// A chosen home folder, and a watcher that was told to share.
struct Stage {
    QTemporaryDir home;
    FakeDefaults defaults;
    FakeScreenshotQuery query;
    ScreenshotShare share{query, defaults, launch};
    QSignalSpy uploads{&share, &ScreenshotShare::uploadRequested};
    QList<ScreenshotItem> items;

    Stage() {
        defaults.setValueForKey(defaultsKey::DirectoryBookmark, bookmarkOf(home.path()));
        defaults.setValueForKey(defaultsKey::screenshotShare, true);
    }

    ScreenshotItem shot(const QString& name, int secondsAfterLaunch,
                        ScreenshotFacts facts = FakeScreenshotQuery::freshFacts) {
        const QString path = QDir(home.path()).absoluteFilePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s cannot be made", qPrintable(path));
        return {QFile::encodeName(path), launch.addSecs(secondsAfterLaunch), facts};
    }
    void arrives(const QList<ScreenshotItem>& more) {
        items += more;
        query.setResults(items);
    }
    // What is uploaded, in any order, once every file has been looked at.
    QStringList uploadedNames() {
        if (!QTest::qWaitFor([this] { return threadCount() <= threadsBefore; }, patience))
            qFatal("a file is still being looked at");
        QCoreApplication::processEvents();
        QStringList names;
        for (const auto& arguments : uploads)
            names.append(QFileInfo(QFile::decodeName(arguments.at(0).toByteArray())).fileName());
        names.sort();
        return names;
    }

    static qsizetype threadCount() { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); }
    const qsizetype threadsBefore = threadCount();
};

} // namespace

class ScreenshotShareTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyTheLastOfEachUpdate() {
        Stage stage;
        stage.arrives({stage.shot(QStringLiteral("a"), 1), stage.shot(QStringLiteral("b"), 2)});
        QCOMPARE(stage.share.queryResults(), stage.items);
        stage.arrives({}); // known already
        stage.items.prepend(stage.shot(QStringLiteral("before"), 0));
        stage.arrives({}); // not the last
        QCOMPARE(stage.share.queryResults().size(), 2);
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("b")});
    }

    void whatIsNotUploaded() {
        Stage stage;
        stage.arrives({stage.shot(QStringLiteral("old"), -1)});
        stage.arrives({stage.shot(QStringLiteral("at launch"), 0)});
        stage.arrives(
            {stage.shot(QStringLiteral("copy"), 1, ScreenshotFact::isScreenCapture | ScreenshotFact::captureType)});
        stage.arrives({stage.shot(QStringLiteral("none"), 2, {})});
        const ScreenshotItem vanished = stage.shot(QStringLiteral("vanished"), 3);
        QVERIFY(QFile::remove(QFile::decodeName(vanished.path)));
        stage.arrives({vanished});
        const QTemporaryDir elsewhere;
        QFile outside(elsewhere.filePath(QStringLiteral("outside")));
        QVERIFY(outside.open(QIODevice::WriteOnly));
        stage.arrives({{QFile::encodeName(outside.fileName()), launch.addSecs(4), FakeScreenshotQuery::freshFacts}});
        // A folder whose path only begins like the chosen one's.
        QVERIFY(QDir().mkdir(stage.home.path() + QStringLiteral("-2")));
        const ScreenshotItem beside = stage.shot(
            QStringLiteral("../") + QFileInfo(stage.home.path()).fileName() + QStringLiteral("-2/beside"), 5);
        stage.arrives(
            {{QFile::encodeName(QDir::cleanPath(QFile::decodeName(beside.path))), beside.creationDate, beside.facts}});
        QCOMPARE(stage.uploadedNames(), QStringList());
        QDir(stage.home.path() + QStringLiteral("-2")).removeRecursively();
    }

    void folderByWayOfLinks() {
        Stage stage;
        const QString link = stage.home.path() + QStringLiteral("-link");
        QVERIFY(QFile::link(stage.home.path(), link));
        stage.defaults.setValueForKey(defaultsKey::DirectoryBookmark, bookmarkOf(link));
        stage.arrives({stage.shot(QStringLiteral("a"), 1)});
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("a")});
        QFile::remove(link);
    }

    // While it stays silent nothing becomes known, so that what is the last when it may speak is uploaded.
    void silentWithoutFolderOrConsent() {
        Stage stage;
        const QVariantMap good = bookmarkOf(stage.home.path());
        const auto isSilent = [&](const QVariant& bookmark, const QVariant& consent) {
            stage.defaults.setValueForKey(defaultsKey::DirectoryBookmark, bookmark);
            stage.defaults.setValueForKey(defaultsKey::screenshotShare, consent);
            stage.arrives({});
            return stage.share.queryResults().isEmpty();
        };
        stage.items = {stage.shot(QStringLiteral("a"), 1)};
        QVERIFY(isSilent({}, true));
        QVERIFY(isSilent(QStringLiteral("nonsense"), true));
        QVERIFY(isSilent(QVariantMap{{defaultsKey::path, stage.home.path()}}, true));
        QVERIFY(isSilent(QVariantMap{{defaultsKey::bookmarkData, good.value(defaultsKey::bookmarkData)}}, true));
        QVERIFY(isSilent(
            QVariantMap{{defaultsKey::path, stage.home.path()}, {defaultsKey::bookmarkData, QByteArray("other")}},
            true));
        QVERIFY(isSilent(good, false));
        QVERIFY(isSilent(good, QVariant()));
        QVERIFY(!isSilent(good, true));
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("a")});
    }

    void bookmarkSurvivesTheSettingsFile() {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("settings.ini"));
        const QVariantMap bookmark = bookmarkOf(folder.path());
        {
            IniDefaults written(file);
            written.setValueForKey(defaultsKey::DirectoryBookmark, bookmark);
            written.setValueForKey(defaultsKey::screenshotShare, true);
        }
        IniDefaults read(file);
        FakeScreenshotQuery query;
        ScreenshotShare share(query, read, launch);
        QCOMPARE(read.valueForKey(defaultsKey::DirectoryBookmark).toMap(), bookmark);
        QVERIFY(share.makeBookMarkURLAccessible(read.valueForKey(defaultsKey::DirectoryBookmark).toMap()));
    }
};

QTEST_GUILESS_MAIN(ScreenshotShareTest)
#include "tst_screenshotshare.moc"
