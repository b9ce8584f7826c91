// Files that pages send: where they end up, what is left when something goes wrong, and that nothing of the user's is
// ever destroyed.

#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeFileBrowser.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeWebDownload.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/downloads/Arrival.h"
#include "workspace/downloads/Downloads.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QUrl address(QStringLiteral("https://example.com/file"));

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

void writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

void complete(FakeWebDownload& download) {
    download.holds = false;
    download.pause();
    download.resume(); // what was held goes on
}

} // namespace

class DownloadsTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private:
    struct Stage {
        QTemporaryDir home;
        QString folder = home.filePath(QStringLiteral("Downloads"));
        FakeFilePanels panels;
        FakeFileBrowser browser;
        FakeAlerts alerts;
        std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
        Downloads downloads{{panels, browser, alerts, folder}, time, [] { return nullptr; }};
        QAbstractItemModelTester tester{&downloads, QAbstractItemModelTester::FailureReportingMode::QtTest};

        std::shared_ptr<FakeWebDownload> offer(const QString& name, const QByteArray& content = "content") {
            auto download = std::make_shared<FakeWebDownload>(address, FakeFile{.name = name, .bytes = content});
            download->holds = true;
            downloads.downloadDidBegin(download);
            return download;
        }
        Arrival::State state(int row = 0) const {
            return Arrival::State(downloads.data(downloads.index(row), Downloads::StateRole).toInt());
        }
        // Everything in the folder, arrivals included.
        QStringList files() const { return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    };

private Q_SLOTS:
    void theFileIsAskedAboutWhileItArrives() {
        Stage stage;
        const auto download = stage.offer(QStringLiteral("Report.pdf"));
        QCOMPARE(stage.panels.waiting(), 1);
        QCOMPARE(stage.panels.opened().first().proposal,
                 QFile::encodeName(stage.folder + QStringLiteral("/Report.pdf")));
        QCOMPARE(stage.downloads.DownloadFileList().size(), 1);
        QVERIFY(!stage.downloads.DownloadFileList().first().contains(QStringLiteral("DownloadPath")));
        complete(*download);
        QTRY_COMPARE(download->state(), WebDownload::State::finished);
        QVERIFY(!stage.files().contains(QStringLiteral("Report.pdf"))); // whole, but nobody has said where to
        const QString chosen = stage.home.filePath(QStringLiteral("mine.pdf"));
        writeFile(chosen, "old"); // the panel has asked
        QVERIFY(stage.panels.choose({QFile::encodeName(chosen)}));
        QTRY_COMPARE(stage.state(), Arrival::State::finished);
        QCOMPARE(contentOf(chosen), "content");
        QCOMPARE(stage.files(), QStringList());
        QCOMPARE(stage.browser.revealed, QList<QByteArray>{QFile::encodeName(chosen)});
        QVERIFY(stage.downloads.DownloadFileList().isEmpty());
        QVERIFY(stage.alerts.shown().isEmpty());
    }

    void whatIsKnownOfARunningDownload() {
        Stage stage;
        const auto download = stage.offer(QStringLiteral("a.txt"));
        const QByteArray path = QFile::encodeName(stage.home.filePath(QStringLiteral("a.txt")));
        QVERIFY(stage.panels.choose({path}));
        QTRY_COMPARE(stage.downloads.DownloadFileList().first(),
                     (QVariantMap{{QStringLiteral("DownloadURL"), address.toString()},
                                  {QStringLiteral("DownloadPath"), QFile::decodeName(path)}}));
        QVERIFY(!QFile::exists(QFile::decodeName(path)));
    }

    void withoutAskingNothingIsReplaced() {
        Stage stage;
        stage.downloads.isAlwaysAskDownlaod = false;
        stage.downloads.isOpenAfterDownload = false;
        QVERIFY(QDir().mkpath(stage.folder));
        writeFile(stage.folder + QStringLiteral("/a.txt"), "old");
        complete(*stage.offer(QStringLiteral("a.txt"), "new"));
        complete(*stage.offer(QStringLiteral("a.txt"), "newer"));
        QTRY_COMPARE(stage.state(0), Arrival::State::finished);
        QTRY_COMPARE(stage.state(1), Arrival::State::finished);
        QCOMPARE(contentOf(stage.folder + QStringLiteral("/a.txt")), "old");
        QSet<QByteArray> others{contentOf(stage.folder + QStringLiteral("/a (2).txt")),
                                contentOf(stage.folder + QStringLiteral("/a (3).txt"))};
        QCOMPARE(others, (QSet<QByteArray>{"new", "newer"}));
        QCOMPARE(stage.files().size(), 3);
        QVERIFY(stage.panels.opened().isEmpty() && stage.browser.revealed.isEmpty());
    }

    // The panel could not ask about the first one: it was not there yet.
    void twoForOnePlace() {
        Stage stage;
        const auto first = stage.offer(QStringLiteral("a.txt"), "first");
        const auto second = stage.offer(QStringLiteral("a.txt"), "second");
        const QByteArray chosen = QFile::encodeName(stage.home.filePath(QStringLiteral("a.txt")));
        QVERIFY(stage.panels.choose({chosen}));
        QTRY_COMPARE(stage.panels.opened().size(), 2);
        QVERIFY(stage.panels.choose({chosen}));
        QTRY_VERIFY(stage.downloads.DownloadFileList().last().contains(QStringLiteral("DownloadPath")));
        complete(*first);
        QTRY_COMPARE(stage.state(0), Arrival::State::finished);
        complete(*second);
        QTRY_COMPARE(stage.state(1), Arrival::State::finished);
        QCOMPARE(contentOf(stage.home.filePath(QStringLiteral("a.txt"))), "first");
        QCOMPARE(contentOf(stage.home.filePath(QStringLiteral("a (2).txt"))), "second");
        QCOMPARE(stage.downloads.data(stage.downloads.index(1), Qt::DisplayRole).toString(),
                 QStringLiteral("a (2).txt"));
    }

    void whatAKilledProgramLeft() {
        Stage stage;
        QVERIFY(QDir().mkpath(stage.folder));
        const QStringList left{QStringLiteral(".quenby-0123456789abcdef.part"),
                               QStringLiteral(".quenby-0123456789abcdef.part.download")};
        const QStringList others{QStringLiteral(".quenby-fedcba9876543210.part"), // of today
                                 QStringLiteral(".quenby-notes"), QStringLiteral("old")};
        for (const QString& name : left + others) {
            QFile file(stage.folder + QLatin1Char('/') + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
            if (name != others.first())
                QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(-3), QFile::FileModificationTime));
        }
        const auto download = stage.offer(QStringLiteral("a.txt"));
        stage.panels.cancel();
        QTRY_COMPARE(stage.files(), others);
    }

    void hostileNames_data() {
        QTest::addColumn<QString>("suggested");
        QTest::newRow("path") << QStringLiteral("../../.bashrc");
        QTest::newRow("absolute") << QStringLiteral("/etc/passwd");
        QTest::newRow("long") << QString(QString(300, QChar(0xE9)) + QStringLiteral(".txt"));
        QTest::newRow("control characters") << QStringLiteral("a\nb\x1b[31m\x7f.txt");
        QTest::newRow("turned") << QStringLiteral("gpj\u202Efdp.exe");
        QTest::newRow("launcher") << QStringLiteral("Report.Desktop");
        QTest::newRow("nothing") << QString();
        QTest::newRow("dots") << QStringLiteral("..");
    }
    void hostileNames() {
        QFETCH(QString, suggested);
        Stage stage;
        stage.downloads.isAlwaysAskDownlaod = false;
        complete(*stage.offer(suggested));
        QTRY_COMPARE(stage.state(), Arrival::State::finished);
        const QStringList files = stage.files();
        QCOMPARE(files.size(), 1);
        QCOMPARE(QDir(stage.home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{QStringLiteral("Downloads")});
        const QString name = files.first();
        QVERIFY2(!name.startsWith(QLatin1Char('.')) && !name.endsWith(QLatin1String(".desktop"), Qt::CaseInsensitive),
                 qPrintable(name));
        for (const QChar character : name)
            QVERIFY(character.isPrint());
    }

    void whatFailsIsToldAndLeavesNothing() {
        Stage stage;
        const auto broken = stage.offer(QStringLiteral("a.txt"));
        stage.offer(QStringLiteral("b.txt"));
        QCOMPARE(stage.panels.opened().size(), 1); // one question at a time
        broken->fail(Error(URLErrorCode::networkConnectionLost,
                           {{errorKey::reason, QStringLiteral("The connection was lost.")}}));
        QTRY_COMPARE(stage.alerts.shown().size(), 1);
        const Alert alert = stage.alerts.shown().first().alert;
        QCOMPARE(alert.messageText, QStringLiteral("Download Failed."));
        QVERIFY(alert.informativeText.contains(QStringLiteral("The connection was lost.")));
        QVERIFY(!alert.informativeText.contains(address.toString()));
        QCOMPARE(stage.state(0), Arrival::State::failed);
        QCOMPARE(stage.state(1), Arrival::State::running);
        QCOMPARE(stage.panels.opened().size(), 2);
        stage.panels.cancel(); // the first one's, which is still open
        QVERIFY(stage.panels.cancel());
        QTRY_COMPARE(stage.state(1), Arrival::State::cancelled);
        QCOMPARE(stage.panels.opened().size(), 2); // nobody was asked twice about the same file
        QCOMPARE(stage.files(), QStringList());
        QCOMPARE(stage.alerts.shown().size(), 1); // nobody needs to be told what they did themselves
        stage.downloads.clearEnded();
        QCOMPARE(stage.downloads.rowCount(), 0);
    }

    void aPlaceThatCannotBeWrittenLosesNothingElse() {
        Stage stage;
        complete(*stage.offer(QStringLiteral("a.txt")));
        QVERIFY(stage.panels.choose({QFile::encodeName(stage.home.filePath(QStringLiteral("nowhere/a.txt")))}));
        QTRY_COMPARE(stage.state(), Arrival::State::failed);
        QVERIFY(stage.alerts.shown().first().alert.informativeText.contains(QStringLiteral("nowhere")));
        QCOMPARE(stage.files(), QStringList());

        writeFile(stage.home.filePath(QStringLiteral("file")), "content");
        Downloads blocked({stage.panels, stage.browser, stage.alerts, stage.home.filePath(QStringLiteral("file"))},
                          stage.time, [] { return nullptr; });
        const auto download = std::make_shared<FakeWebDownload>(address, FakeFile{.name = QStringLiteral("a")});
        blocked.downloadDidBegin(download);
        QCOMPARE(download->state(), WebDownload::State::offered);
        QCOMPARE(stage.alerts.shown().size(), 2);
    }

    // Another file system than the one of the folder for downloads, where there is one.
    void anotherDisk() {
        QTemporaryDir other(QStringLiteral("/dev/shm/quenby-test-XXXXXX"));
        if (!other.isValid())
            QSKIP("there is no /dev/shm");
        Stage stage;
        const QByteArray content(3'000'000, 'x');
        complete(*stage.offer(QStringLiteral("a.bin"), content));
        QVERIFY(stage.panels.choose({QFile::encodeName(other.filePath(QStringLiteral("a.bin")))}));
        QTRY_COMPARE(stage.state(), Arrival::State::finished);
        QCOMPARE(contentOf(other.filePath(QStringLiteral("a.bin"))), content);
        QCOMPARE(stage.files(), QStringList());
        QCOMPARE(QDir(other.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void whoeverLeavesLeavesNothing() {
        Stage stage;
        stage.downloads.isAlwaysAskDownlaod = false;
        complete(*stage.offer(QStringLiteral("a.txt")));
        QTRY_COMPARE(stage.state(), Arrival::State::finished);
        const auto running = stage.offer(QStringLiteral("b.txt"));
        stage.downloads.forgetEverything();
        QCOMPARE(stage.downloads.rowCount(), 0);
        QCOMPARE(running->state(), WebDownload::State::cancelled);
        QCOMPARE(stage.files(), QStringList{QStringLiteral("a.txt")});
    }

    void theEndOfTheProgramLeavesNothing() {
        QTemporaryDir home;
        FakeFilePanels panels;
        FakeFileBrowser browser;
        FakeAlerts alerts;
        std::shared_ptr<FakeWebDownload> download;
        {
            Downloads downloads({panels, browser, alerts, home.path()}, std::make_shared<ManualTimeSource>(),
                                [] { return nullptr; });
            download = std::make_shared<FakeWebDownload>(address, FakeFile{.name = QStringLiteral("a")});
            download->holds = true;
            downloads.downloadDidBegin(download);
            QCOMPARE(downloads.rowCount(), 1);
        }
        QCOMPARE(download->state(), WebDownload::State::cancelled);
        QVERIFY(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
    }
};

QTEST_MAIN(DownloadsTest)
#include "tst_downloads.moc"
