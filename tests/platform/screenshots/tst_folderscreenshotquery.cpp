// Folders that come and go, files that are not done, and folders that tell nothing: what the query hears of them.
#include "platform/linux/screenshots/FolderScreenshotQuery.h"
#include "tests/platform/screenshots/PictureMaking.h"
#include "tests/support/HastyTimeSource.h"

#include <QDir>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

constexpr ScreenshotFacts allFacts =
    ScreenshotFact::isScreenCapture | ScreenshotFact::captureType | ScreenshotFact::capturedRectangle;

// A home of its own, watched in a hurry.
struct Stage {
    QTemporaryDir home;
    const QByteArray root = QFile::encodeName(QDir(home.path()).canonicalPath());
    const QByteArray pictures = root + "/Pictures";
    const QByteArray desktop = root + "/Desktop";
    std::unique_ptr<FolderScreenshotQuery> query;
    std::unique_ptr<QSignalSpy> updates;

    Stage() { QDir(home.path()).mkdir(QStringLiteral("Desktop")); }

    void start(TellsNoChanges tellsNoChanges = [](const QByteArray&) { return false; }) {
        query = std::make_unique<FolderScreenshotQuery>(
            std::make_shared<HastyTimeSource>(),
            ScreenshotPlaces{{desktop, pictures}, [] { return QSize(640, 480); }, std::move(tellsNoChanges)});
        updates = std::make_unique<QSignalSpy>(query.get(), &FolderScreenshotQuery::updated);
        query->start();
    }

    // Of fresh ones, oldest first.
    QList<QByteArray> fresh() const {
        QList<QByteArray> paths;
        for (const ScreenshotItem& item : query->results()) {
            if (item.facts == allFacts)
                paths.append(item.path);
        }
        return paths;
    }
    bool knows(const QByteArray& path) const {
        const QList<ScreenshotItem> results = query->results();
        return std::any_of(results.begin(), results.end(), [&](const auto& item) { return item.path == path; });
    }
    // A picture that is taken now, and known when this returns. Its number keeps names apart.
    QByteArray takePicture(const QByteArray& folder, int number) {
        const QByteArray path =
            folder + '/' + nameOfShot(QDateTime::currentDateTime(), QStringLiteral("-%1.png").arg(number));
        writeFile(path, picture(QSize(64, 48)));
        return QTest::qWaitFor([&] { return fresh().contains(path); }, patience) ? path : QByteArray();
    }
};

QByteArray shotNow(int number) {
    return nameOfShot(QDateTime::currentDateTime(), QStringLiteral("-%1.png").arg(number));
}

QByteArray in(const QByteArray& folder, int number) { return folder + '/' + shotNow(number); }

} // namespace

class FolderScreenshotQueryTest : public QObject {
    Q_OBJECT

    static qsizetype threadCount() { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); }
    bool isNothingLookedAt() const {
        return QTest::qWaitFor([this] { return threadCount() <= threadsBefore_; }, patience);
    }
    qsizetype threadsBefore_ = 0;

private Q_SLOTS:
    void initTestCase() { threadsBefore_ = threadCount(); }

    void toldOnceWhenWhole_data() {
        QTest::addColumn<bool>("asks");
        QTest::newRow("told by the kernel") << false;
        QTest::newRow("asked every few seconds") << true;
    }
    void toldOnceWhenWhole() {
        QFETCH(bool, asks);
        Stage stage;
        stage.start([asks](const QByteArray&) { return asks; });
        const QByteArray first = stage.takePicture(stage.desktop, 1);
        QVERIFY(!first.isEmpty());
        QCOMPARE(stage.updates->count(), 1);

        const QByteArray bytes = picture(QSize(64, 48));
        const QByteArray slow = in(stage.desktop, 2);
        QFile file(QFile::decodeName(slow));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes.first(40));
        file.flush();
        // What comes afterwards was looked at later: so the half one has been seen by then.
        const QByteArray next = stage.takePicture(stage.desktop, 3);
        QVERIFY(!next.isEmpty());
        QCOMPARE(stage.fresh(), (QList<QByteArray>{first, next}));
        QVERIFY(!stage.knows(slow));
        file.write(bytes.mid(40));
        file.close();
        QVERIFY(QTest::qWaitFor([&] { return stage.fresh().contains(slow); }, patience));
        QCOMPARE(stage.fresh(), (QList<QByteArray>{first, slow, next})); // by the dates at which they were made

        QVERIFY(QFile::remove(QFile::decodeName(next)));
        QVERIFY(QTest::qWaitFor([&] { return !stage.knows(next); }, patience));
    }

    void foldersComeAndGo() {
        Stage stage;
        stage.start();
        QVERIFY(!stage.takePicture(stage.desktop, 1).isEmpty());
        const QString path = QFile::decodeName(stage.pictures);
        for (int round = 0; round < 3; ++round) {
            QVERIFY(QDir().mkpath(path));
            const QByteArray shot = stage.takePicture(stage.pictures, 10 + round);
            QVERIFY2(!shot.isEmpty(), qPrintable(QString::number(round)));
            if (round == 0) { // moved away: what happens there is no business of ours
                QVERIFY(QDir().rename(path, path + QStringLiteral("-old")));
            } else {
                QVERIFY(QDir(path).removeRecursively());
            }
            QVERIFY(QTest::qWaitFor([&] { return !stage.knows(shot); }, patience));
        }
        writeFile(stage.pictures + "-old/" + shotNow(20), picture(QSize(64, 48)));
        QVERIFY(!stage.takePicture(stage.desktop, 2).isEmpty());
        QCOMPARE(stage.query->results().size(), 2);
        // A link to a folder is as good as a folder, and a second path to the same one tells nothing twice.
        QVERIFY(QFile::link(QFile::decodeName(stage.desktop), path));
        QVERIFY(!stage.takePicture(stage.desktop, 3).isEmpty());
        QCOMPARE(stage.fresh().size(), 3);
    }

    void foldersThatAreAdded() {
        Stage stage;
        const QByteArray added = stage.root + "/Added";
        QVERIFY(QDir().mkdir(QFile::decodeName(added)));
        stage.start();
        QVERIFY(!stage.takePicture(stage.desktop, 1).isEmpty());
        const QByteArray before = in(added, 2);
        writeFile(before, picture(QSize(64, 48)));
        stage.query->setAddedFolders({added + "/../Added/", "Added", added, stage.desktop});
        QVERIFY(QTest::qWaitFor([&] { return stage.knows(before); }, patience));
        const QByteArray after = stage.takePicture(added, 3);
        QVERIFY(!after.isEmpty());
        QCOMPARE(stage.fresh().size(), 2); // a new one in each, nothing twice
        QVERIFY(!stage.fresh().contains(before));

        // Another folder more changes nothing for this one; it need not be there yet.
        const QByteArray later = stage.root + "/Later";
        stage.query->setAddedFolders({later, added});
        QVERIFY(!stage.takePicture(added, 7).isEmpty()); // later than that, also by the clock that stamps files
        QVERIFY(QDir().mkdir(QFile::decodeName(later)));
        QVERIFY(!stage.takePicture(later, 4).isEmpty());
        QVERIFY(stage.fresh().contains(after));

        stage.query->setAddedFolders({later});
        QVERIFY(QTest::qWaitFor([&] { return !stage.knows(after); }, patience));
        const QByteArray unseen = in(added, 5);
        writeFile(unseen, picture(QSize(64, 48)));
        QVERIFY(!stage.takePicture(later, 6).isEmpty());
        QVERIFY(!stage.knows(unseen));
        stage.query->setAddedFolders({added});
        QVERIFY(QTest::qWaitFor([&] { return stage.knows(unseen) && stage.knows(after); }, patience));
        QCOMPARE(stage.fresh().size(), 1); // on the desktop
    }

    void whatIsNoScreenshot() {
        Stage stage;
        QVERIFY(QDir().mkpath(QFile::decodeName(stage.pictures)));
        stage.start();
        const QByteArray shot = stage.takePicture(stage.desktop, 1);
        QVERIFY(!shot.isEmpty());
        QCOMPARE(::mkfifo(in(stage.pictures, 2).constData(), 0600), 0);
        QVERIFY(QDir().mkdir(QFile::decodeName(in(stage.pictures, 3))));
        QCOMPARE(::symlink("/dev/zero", in(stage.pictures, 4).constData()), 0);
        QCOMPARE(::symlink(shot.constData(), in(stage.pictures, 5).constData()), 0);
        writeFile(in(stage.pictures, 6), picture(QSize(64, 48)).first(50)); // its writer died
        writeFile(stage.pictures + "/holiday.png", picture(QSize(64, 48)));
        const QByteArray copy = stage.pictures + shot.mid(shot.lastIndexOf('/'));
        QVERIFY(QFile::copy(QFile::decodeName(shot), QFile::decodeName(copy)));
        const QByteArray larger = in(stage.pictures, 7);
        writeFile(larger, picture(QSize(700, 48)));
        const QByteArray last = stage.takePicture(stage.pictures, 8);
        QVERIFY(!last.isEmpty());
        QVERIFY(QTest::qWaitFor([&] { return stage.knows(copy) && stage.knows(larger); }, patience));
        QCOMPARE(stage.fresh(), (QList<QByteArray>{shot, last}));
        QCOMPARE(stage.query->results().size(), 4);
    }

    void folderThatDoesNotAnswer() {
        const auto answers = std::make_shared<QSemaphore>();
        Stage stage;
        QVERIFY(QDir().mkpath(QFile::decodeName(stage.pictures)));
        stage.start([answers](const QByteArray& folder) {
            if (folder.endsWith("/Pictures"))
                answers->acquire();
            return false;
        });
        QVERIFY(!stage.takePicture(stage.desktop, 1).isEmpty());
        stage.query.reset(); // waits for nobody
        answers->release(1000);
    }

    void nothingIsLeftOfAFolderThatIsTakenBackMeanwhile() {
        const auto notices = [] {
            qsizetype number = 0;
            for (const QFileInfo& info : QDir(QStringLiteral("/proc/self/fdinfo")).entryInfoList(QDir::Files)) {
                QFile file(info.filePath());
                number += file.open(QIODevice::ReadOnly) ? file.readAll().count("inotify wd:") : 0;
            }
            return number;
        };
        const auto answers = std::make_shared<QSemaphore>();
        Stage stage;
        const QByteArray added = stage.root + "/Added";
        QVERIFY(QDir().mkdir(QFile::decodeName(added)));
        stage.start([answers, added](const QByteArray& folder) {
            if (folder == added)
                answers->acquire();
            return false;
        });
        QVERIFY(!stage.takePicture(stage.desktop, 1).isEmpty());
        QVERIFY(isNothingLookedAt());
        const qsizetype before = notices();
        QVERIFY(before > 0);
        stage.query->setAddedFolders({added});
        stage.query->setAddedFolders({});
        answers->release();
        QVERIFY(isNothingLookedAt());
        QCOMPARE(notices(), before);
    }

    // Nobody reads them: they cannot even be read.
    void oldPicturesAreKnownByName() {
        Stage stage;
        const QByteArray name = nameOfShot(QDateTime::currentDateTime().addDays(-1));
        const QByteArray old = stage.desktop + '/' + name;
        writeFile(old, "not to be read");
        QCOMPARE(::chmod(old.constData(), 0), 0);
        stage.start();
        QVERIFY(QTest::qWaitFor([&] { return stage.knows(old); }, patience));
        QCOMPARE(stage.query->results().constFirst().facts, ScreenshotFacts(ScreenshotFact::isScreenCapture));
    }

    void noNoticesLeft() {
        Stage stage;
        ::rlimit before{};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
        ::rlimit none = before;
        none.rlim_cur = 0;
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
        const auto timeSource = std::make_shared<HastyTimeSource>();
        FolderNotices notices;
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);
        QCOMPARE(notices.board()->descriptor(), -1);
        FolderWatch watch(stage.desktop, {notices, *timeSource, [](const QByteArray&) { return false; },
                                          [] { return QSize(640, 480); }, 0});
        const QByteArray name = shotNow(1);
        QTRY_VERIFY(watch.contents().folder);
        writeFile(stage.desktop + '/' + name, picture(QSize(64, 48)));
        QTRY_COMPARE_WITH_TIMEOUT(watch.contents().pictures.value(name).facts, allFacts, patience);
    }
};

QTEST_GUILESS_MAIN(FolderScreenshotQueryTest)
#include "tst_folderscreenshotquery.moc"
