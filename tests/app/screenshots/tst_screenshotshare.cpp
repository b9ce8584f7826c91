// Which screenshots are uploaded, and which never are.
#include "app/agent/DefaultsTable.h"
#include "app/screenshots/ScreenshotShare.h"
#include "core/DefaultsKeys.h"
#include "core/FolderBookmark.h"
#include "platform/linux/session/IniDefaults.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeScreenshotQuery.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

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
    // Folders and files have been looked at. What one thread found lets the next begin: a round for each.
    void settle() const {
        constexpr int mostRounds = 50;
        for (int round = 0; round < mostRounds; ++round) {
            if (!QTest::qWaitFor([this] { return threadCount() <= threadsBefore; }, patience))
                qFatal("a file is still being looked at");
            QCoreApplication::processEvents();
        }
    }
    // What is uploaded, in any order.
    QStringList uploadedNames() {
        settle();
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
        QVERIFY(stage.share.queryResults().isEmpty()); // nobody waits for the folder
        stage.settle();
        QCOMPARE(stage.share.queryResults(), stage.items);
        stage.arrives({}); // known already
        stage.items.prepend(stage.shot(QStringLiteral("before"), 0));
        stage.arrives({}); // not the last
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("b")});
        QCOMPARE(stage.share.queryResults().size(), 2);

        // Each update counts, also those that came while the folder was being opened.
        stage.arrives({stage.shot(QStringLiteral("c"), 3)});
        stage.arrives({stage.shot(QStringLiteral("d"), 4)});
        stage.arrives({});
        QCOMPARE(stage.uploadedNames(), (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")}));
        QCOMPARE(stage.share.queryResults(), stage.items);
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
            stage.settle();
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
        // The folder is somewhere else now, or another one is in its place.
        const QString path = stage.home.path();
        QVERIFY(QDir().rename(path, path + QStringLiteral("-moved")));
        QVERIFY(isSilent(good, true));
        QVERIFY(QDir().mkdir(path));
        QVERIFY(isSilent(good, true));
        QVERIFY(QDir().rmdir(path) && QDir().rename(path + QStringLiteral("-moved"), path));
        // Withdrawn while the folder is being opened.
        stage.defaults.setValueForKey(defaultsKey::screenshotShare, true);
        stage.arrives({});
        QVERIFY(isSilent(good, false));
        QVERIFY(!isSilent(good, true));
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("a")});
    }

    void aFolderThatIsChosenMeanwhileIsOpenedInstead() {
        Stage stage;
        const QVariant good = stage.defaults.valueForKey(defaultsKey::DirectoryBookmark);
        stage.defaults.setValueForKey(defaultsKey::DirectoryBookmark, bookmarkOf(QStringLiteral("/proc")));
        stage.arrives({stage.shot(QStringLiteral("a"), 1)});
        stage.defaults.setValueForKey(defaultsKey::DirectoryBookmark, good);
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("a")});
    }

    void addedFolders() {
        Stage stage;
        const QTemporaryDir added;
        const QString gone = added.path() + QStringLiteral("/gone");
        const QByteArray addedPath = QFile::encodeName(added.path());
        QFile file(added.filePath(QStringLiteral("new")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const ScreenshotItem item{QFile::encodeName(file.fileName()), launch.addSecs(1),
                                  FakeScreenshotQuery::freshFacts};
        // Everything but absolute paths is as good as nothing, and a folder that is not there stands for no other.
        const QString key = defaultsKey::screenshotFolders;
        for (const QVariant& nothing :
             {QVariant(1), QVariant(QVariantMap{{added.path(), added.path()}}), QVariant(QStringLiteral("relative")),
              QVariant(QVariantList{1, QVariantList{added.path()}}), QVariant()}) {
            stage.defaults.setValueForKey(key, added.path());
            stage.defaults.setValueForKey(key, nothing);
            QCOMPARE(stage.query.added, QList<QByteArray>());
        }
        stage.defaults.setValueForKey(key, gone);
        stage.arrives({item});
        QCOMPARE(stage.uploadedNames(), QStringList());

        stage.defaults.setValueForKey(key, QStringList{gone, added.path() + QLatin1Char('/')});
        QCOMPARE(stage.query.added, (QList<QByteArray>{QFile::encodeName(gone), addedPath}));
        QFile second(added.filePath(QStringLiteral("second")));
        QVERIFY(second.open(QIODevice::WriteOnly));
        stage.arrives({{QFile::encodeName(second.fileName()), launch.addSecs(2), item.facts}});
        QCOMPARE(stage.uploadedNames(), QStringList{QStringLiteral("second")});
        stage.arrives({stage.shot(QStringLiteral("at home"), 3)});
        QCOMPARE(stage.uploadedNames(), (QStringList{QStringLiteral("at home"), QStringLiteral("second")}));

        // Known from the start.
        stage.query.added.clear();
        const ScreenshotShare next(stage.query, stage.defaults, launch);
        QCOMPARE(stage.query.added.size(), 2);
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
        std::optional<bool> opened;
        share.makeBookMarkURLAccessible(read.valueForKey(defaultsKey::DirectoryBookmark).toMap(), this,
                                        [&opened](bool succeeded) { opened = succeeded; });
        QTRY_VERIFY_WITH_TIMEOUT(opened, patience);
        QVERIFY(*opened);
    }
};

QTEST_GUILESS_MAIN(ScreenshotShareTest)
#include "tst_screenshotshare.moc"
