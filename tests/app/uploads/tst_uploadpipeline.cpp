// The upload pipeline against the real local Drive, with the desktop's services played by fakes.

#include "app/uploads/UploadPipeline.h"
#include "app/uploads/transfer/InsertQuery.h"
#include "driveapi/GTLDriveFile.h"
#include "tests/faults/FaultBench.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/support/ManualTimeSource.h"

#include <QDir>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

const QString screenShot = QStringLiteral("Screen Shot");

// The files below the folder that this process holds open.
int openFiles(const QByteArray& folder) {
    int count = 0;
    const QFileInfoList descriptors = QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::Files | QDir::System);
    for (const QFileInfo& descriptor : descriptors)
        count += QFile::encodeName(descriptor.symLinkTarget()).startsWith(folder);
    return count;
}

} // namespace

class UploadPipelineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        QVERIFY2(bench_.prepare(), bench_.drive().log().constData());
        bench_.service().fetcherService()->setTimeout(60s); // of real time: a busy computer is no fault
        alerts_ = std::make_unique<FakeAlerts>();
        defaults_ = std::make_unique<FakeDefaults>();
        panels_ = std::make_unique<FakeFilePanels>();
        notifications_ = std::make_unique<FakeNotifications>();
        opener_ = std::make_unique<FakeOpener>();
        pasteboard_ = std::make_unique<FakePasteboard>();
        folder_ = std::make_unique<QTemporaryDir>();
        isSignedIn_ = true;
        uploaded_.clear();
        shared_.clear();
        parents_.clear();
        startPipeline();
        // The pipeline's time stands still: what pauses after trouble goes on by this.
        resumer_.start(1s);
    }
    void cleanup() {
        pipeline_.reset();
        for (const QByteArray& path : std::exchange(made_, {}))
            ::unlink(path.constData()); // the toolkit can't remove names that are not UTF-8
    }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    void oneUpload_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("needToShare");
        QTest::addColumn<bool>("removeSource");
        QTest::addColumn<bool>("display");
        QTest::newRow("plain") << QByteArray("Report.pdf") << false << false << true;
        QTest::newRow("shared") << QByteArray("Shared.pdf") << true << false << true;
        QTest::newRow("source removed, silent") << QByteArray("Cast.mov") << false << true << false;
        QTest::newRow("markup") << QByteArray("<b>a & b<br>") << true << true << true;
        QTest::newRow("not UTF-8") << QByteArray("caf\xE9.txt") << false << false << true;
        QTest::newRow("empty") << QByteArray() << false << false << true;
    }
    void oneUpload() {
        QFETCH(QByteArray, name);
        QFETCH(bool, needToShare);
        QFETCH(bool, removeSource);
        QFETCH(bool, display);
        const QByteArray content = name.isEmpty() ? QByteArray() : sampleBytes(250000);
        const QByteArray path = makeFile(name.isEmpty() ? QByteArray("nothing in it") : name, content);
        defaults_->setValueForKey(QStringLiteral("notificationDisplay"), display);
        QSignalSpy refreshed(pipeline_.get(), &UploadPipeline::uploadStatusChanged);
        pipeline_->uploadUsingThisQuery(insertQueryForPath(path, {}), path, needToShare, QStringLiteral("File"),
                                        removeSource);
        QCOMPARE(pipeline_->uploadStatusPath(), path);
        QCOMPARE(pipeline_->uploadStatusPer(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(uploaded_.size(), 1, patiently);

        QVERIFY(pipeline_->uploadStatusPath().isNull());
        QCOMPARE(pipeline_->uploadStatusPer(), 100);
        QVERIFY(refreshed.size() >= 2);
        const QString title = titleOfPath(path);
        QCOMPARE(bench_.copiesOf(title), QStringList{md5Of(content)});
        QCOMPARE(shared_, needToShare ? QStringList{uploaded_.first() + QLatin1Char('|') + title} : QStringList{});
        QCOMPARE(::access(path, F_OK) == 0, !removeSource);
        QCOMPARE(alerts_->shown().size(), 0);
        QCOMPARE(notifications_->posted().size(), display ? 1 : 0);
        if (!display)
            return;
        const auto posted = notifications_->posted().first();
        QCOMPARE(posted.notification.title, QStringLiteral("Quenby New Update!"));
        QCOMPARE(posted.notification.text,
                 QString(QStringLiteral(" \n ") + nameForPeople(path) + QStringLiteral(" added")));
        notifications_->invoke(posted.identifier, QStringLiteral("show"));
        QCOMPARE(opener_->opened().size(), 1);
        QVERIFY(opener_->opened().first().toString().contains(uploaded_.first()));
    }

    void oneFailure_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* kind, const char* reason) {
            QTest::newRow(kind) << QString::fromLatin1(kind) << QString::fromLatin1(reason);
        };
        row("fifo", "is a pipe");
        row("missing", "no such file");
        row("refused", "The quota is used up");
        row("signed out", "no user is signed in");
    }
    void oneFailure() {
        QFETCH(QString, kind);
        QFETCH(QString, reason);
        const QByteArray path = makeSource(kind);
        isSignedIn_ = kind != QLatin1String("signed out");
        if (kind == QLatin1String("refused"))
            QVERIFY(bench_.drive().orderFaults(R"([{"match": {"pathPrefix": "/upload", "method": "POST"}, "action":
                {"status": 403, "contentType": "application/json", "body": {"error": {"code": 403, "message":
                "The quota is used up", "data": [{"reason": "quotaExceeded"}]}}}}])"));
        pipeline_->uploadUsingThisQuery(insertQueryForPath(path, {}), path, true, screenShot, true);
        QTRY_COMPARE_WITH_TIMEOUT(alerts_->shown().size(), 1, patiently);
        const Alert alert = alerts_->shown().first().alert;
        QCOMPARE(alert.messageText, QStringLiteral("Error"));
        QCOMPARE(alert.informativeText, QStringLiteral("Screen Shot Upload Failed"));
        QVERIFY2(alert.details.startsWith(kind + QStringLiteral(": ")) && alert.details.contains(reason),
                 qPrintable(alert.details));
        QVERIFY(pipeline_->uploadStatusPath().isNull());
        QCOMPARE(::access(path, F_OK), -1); // removed, although it failed
        QVERIFY(uploaded_.isEmpty() && shared_.isEmpty() && notifications_->posted().isEmpty());
        QVERIFY(pipeline_->remaining().isEmpty());
    }

    void hundredsOfFiles() {
        QList<QByteArray> paths;
        const QStringList troubles{QStringLiteral("fifo"), QStringLiteral("directory"), QStringLiteral("dangling link"),
                                   QStringLiteral("device"), QStringLiteral("missing")};
        for (int i = 0; i < 200; ++i) {
            paths.append(makeFile("many " + QByteArray::number(i), QByteArray::number(i)));
            if (i % 40 == 5)
                paths.append(makeSource(troubles.at(i / 40)));
        }
        int mostOpen = 0;
        connect(pipeline_.get(), &UploadPipeline::uploaded, this,
                [&] { mostOpen = std::max(mostOpen, openFiles(QFile::encodeName(folder_->path()))); });
        pipeline_->UploadFilesToServer(paths);
        QCOMPARE(pipeline_->remaining().size(), paths.size());
        QTRY_VERIFY_WITH_TIMEOUT(pipeline_->remaining().isEmpty(), 3 * patiently);

        QCOMPARE(uploaded_.size(), 200);
        QCOMPARE(QSet<QString>(uploaded_.begin(), uploaded_.end()).size(), 200);
        QCOMPARE(bench_.copiesOf(QStringLiteral("many 137")), QStringList{md5Of("137")});
        QVERIFY2(mostOpen >= 1 && mostOpen <= 4, qPrintable(QString::number(mostOpen)));

        QCOMPARE(alerts_->waiting(), 1); // the first failure; the others wait behind it
        QVERIFY(alerts_->answer(0));
        QTRY_COMPARE(alerts_->shown().size(), 2);
        QCOMPARE(alerts_->shown().last().alert.informativeText, QStringLiteral("File Upload Failed"));
        QCOMPARE(alerts_->shown().last().alert.details.count(QLatin1Char('\n')), 3);

        QCOMPARE(notifications_->onScreen().size(), 9);
        time_->advance(1s);
        QCOMPARE(notifications_->onScreen().size(), 9);
        QVERIFY(notifications_->posted().last().notification.text.endsWith(QStringLiteral("\nand 191 more")));
    }

    void folders() {
        QStringList made;
        connect(pipeline_.get(), &UploadPipeline::RootFolderIdChanged, this,
                [&made](const QString& identifier) { made.append(identifier); });
        const auto upload = [this](int count) {
            uploaded_.clear();
            for (int i = 0; i < count; ++i)
                pipeline_->uploadInGoogleDriveIn(screenShot, makeFile("shot " + QByteArray::number(i), "picture"));
            QTRY_COMPARE_WITH_TIMEOUT(uploaded_.size(), count, patiently);
            for (const QString& identifier : uploaded_)
                parents_.insert(fileOf(identifier)->parents()->at(0)->identifier());
        };
        upload(12); // all at once: made once
        QCOMPARE(made.size(), 1);
        QCOMPARE(parents_, QSet<QString>{made.first()});
        upload(1); // found
        QCOMPARE(made.size(), 1);
        QCOMPARE(parents_, QSet<QString>{made.first()});
        QVERIFY(bench_.call(GTLQueryDrive::queryForFilesTrashWithFileId(made.first())).ok());
        upload(1); // in the trash: made anew
        QCOMPARE(made.size(), 2);
        QCOMPARE(parents_, (QSet<QString>{made.first(), made.last()}));
        QCOMPARE(alerts_->shown().size(), 0);
    }

    void manyIntoOneFolder() {
        QStringList made;
        connect(pipeline_.get(), &UploadPipeline::RootFolderIdChanged, this,
                [&made](const QString& identifier) { made.append(identifier); });
        const QByteArray gone = makeFile("copied gone", "gone");
        QList<QByteArray> paths{makeFile("copied 1", "1"), gone, makeFile("copied 2", "2"),
                                makeSource(QStringLiteral("fifo"))};
        pipeline_->uploadInGoogleDriveIn(QStringLiteral("Clip board"), paths);
        QCOMPARE(pipeline_->remaining().size(), 4); // what another instance would be given
        QCOMPARE(::unlink(gone), 0);                // before the folder is there
        QTRY_VERIFY_WITH_TIMEOUT(pipeline_->remaining().isEmpty(), patiently);

        QCOMPARE(uploaded_.size(), 2);
        QCOMPARE(made.size(), 1);
        for (const QString& identifier : uploaded_)
            QCOMPARE(fileOf(identifier)->parents()->at(0)->identifier(), made.first());
        QCOMPARE(alerts_->shown().size(), 1); // of the pipe alone
        QCOMPARE(alerts_->shown().first().alert.informativeText, QStringLiteral("Clip board Upload Failed"));

        pipeline_->uploadInGoogleDriveIn(QStringLiteral("Clip board"), paths);
        pipeline_->cancelEverything();
        QVERIFY(pipeline_->remaining().isEmpty());
        pipeline_->uploadInGoogleDriveIn(QStringLiteral("Clip board"), QList{paths.first()});
        QTRY_COMPARE_WITH_TIMEOUT(uploaded_.size(), 3, patiently);
        QCOMPARE(alerts_->shown().size(), 1);
    }

    void folderThatCannotBeFoundEndsSilently() {
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"rpcMethod": "drive.children.list"}, "action": {"status": 403}}])"));
        pipeline_->uploadInGoogleDriveIn(QStringLiteral("Refused"), makeFile("a", "a"));
        QCOMPARE(pipeline_->remaining().size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(pipeline_->remaining().isEmpty(), patiently);
        pipeline_->UploadFilesToServer({makeFile("b", "b")}); // others go on
        QTRY_COMPARE_WITH_TIMEOUT(uploaded_.size(), 1, patiently);
        QCOMPARE(alerts_->shown().size(), 0);
    }

    // Whose progress is shown goes on, or others take its place.
    void aPausedUploadShowsNoProgress() {
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"uploadPut": true, "times": -1}, "action": {"reset": "before"}}])"));
        const QByteArray path = makeFile("paused", sampleBytes(250000));
        pipeline_->UploadFilesToServer({path});
        QCOMPARE(pipeline_->uploadStatusPath(), path);
        pipeline_->queue().pause(pipeline_->queue().numbers());
        QVERIFY(pipeline_->uploadStatusPath().isNull());
        pipeline_->queue().resume(pipeline_->queue().numbers());
        QCOMPARE(pipeline_->uploadStatusPath(), path);
        pipeline_->queue().cancel(pipeline_->queue().numbers());
        QVERIFY(pipeline_->uploadStatusPath().isNull());
    }

    void panel() {
        pipeline_->SelectAndUploadFile(nullptr);
        QCOMPARE(panels_->opened().last().prompt, QStringLiteral("Upload"));
        QVERIFY(panels_->cancel());
        pipeline_->SelectAndUploadFileAndShare(nullptr);
        QVERIFY(panels_->choose({makeFile("chosen 1", "1"), makeFile("chosen 2", "2")}));
        QTRY_COMPARE_WITH_TIMEOUT(shared_.size(), 2, patiently);
        pipeline_->SelectAndUploadFile(nullptr);
        QVERIFY(panels_->choose({makeFile("chosen 3", "3")}));
        QTRY_COMPARE_WITH_TIMEOUT(uploaded_.size(), 3, patiently);
        QCOMPARE(shared_.size(), 2);
    }

private:
    void startPipeline() {
        time_ = std::make_shared<ManualTimeSource>();
        const auto driveService = [this] {
            // The bench keeps the service; it outlives the pipeline.
            return isSignedIn_ ? std::shared_ptr<GTLServiceDrive>(std::shared_ptr<void>(), &bench_.service()) : nullptr;
        };
        pipeline_ = std::make_unique<UploadPipeline>(UploadServices{driveService, time_, *defaults_, *notifications_,
                                                                    *alerts_, *panels_, *pasteboard_, *opener_},
                                                     [] { return nullptr; });
        connect(&resumer_, &QTimer::timeout, pipeline_.get(), &UploadPipeline::tryNow);
        connect(pipeline_.get(), &UploadPipeline::uploaded, this,
                [this](const QString& identifier) { uploaded_.append(identifier); });
        connect(pipeline_.get(), &UploadPipeline::shareRequested, this,
                [this](const QString& identifier, const QString& name) {
                    shared_.append(identifier + QLatin1Char('|') + name);
                });
    }

    QByteArray makeFile(const QByteArray& name, const QByteArray& content) {
        const QByteArray path = QFile::encodeName(folder_->path()) + '/' + name;
        made_.append(path);
        std::FILE* file = std::fopen(path.constData(), "wb");
        const auto length = static_cast<size_t>(content.size());
        return file && std::fwrite(content.constData(), 1, length, file) == length && std::fclose(file) == 0
                   ? path
                   : QByteArray();
    }
    // Of a kind that can't be uploaded, or an ordinary file.
    QByteArray makeSource(const QString& kind) {
        const QByteArray path = QFile::encodeName(folder_->filePath(kind));
        if (kind == QLatin1String("missing"))
            return path;
        if (kind == QLatin1String("device"))
            return "/dev/zero";
        if (kind == QLatin1String("fifo"))
            return ::mkfifo(path, 0600) == 0 ? path : QByteArray();
        if (kind == QLatin1String("directory"))
            return ::mkdir(path, 0700) == 0 ? path : QByteArray();
        if (kind == QLatin1String("dangling link"))
            return ::symlink("/nowhere/at/all", path) == 0 ? path : QByteArray();
        return makeFile(kind.toUtf8(), "content");
    }
    std::shared_ptr<GTLDriveFile> fileOf(const QString& identifier) {
        const auto reply = bench_.call(GTLQueryDrive::queryForFilesGetWithFileId(identifier));
        return std::dynamic_pointer_cast<GTLDriveFile>(reply.valueOr(nullptr));
    }

    FaultBench bench_;
    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<FakeAlerts> alerts_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<FakeFilePanels> panels_;
    std::unique_ptr<FakeNotifications> notifications_;
    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<FakePasteboard> pasteboard_;
    std::shared_ptr<ManualTimeSource> time_; // the pipeline's; the fetchers' goes on
    QTimer resumer_;
    bool isSignedIn_ = true;
    std::unique_ptr<UploadPipeline> pipeline_;
    QList<QByteArray> made_;
    QStringList uploaded_; // identifiers
    QStringList shared_;   // identifier|originalFilename
    QSet<QString> parents_;
};

QTEST_GUILESS_MAIN(UploadPipelineTest)
#include "tst_uploadpipeline.moc"
