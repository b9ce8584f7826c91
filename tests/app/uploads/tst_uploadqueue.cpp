// The upload queue against the real local Drive: what survives the end of a program, and what the user may do with it.

#include "app/uploads/UploadQueue.h"
#include "app/uploads/journal/UploadJournal.h"
#include "tests/faults/FaultBench.h"
#include "tests/support/ManualTimeSource.h"

#include <QDir>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

const QString ann = u"ann@example.com"_s;
const QString bob = u"bob@example.com"_s;

// Announcements are answered, and no byte gets through.
constexpr auto blocked = R"([{"match": {"uploadPut": true, "times": -1}, "action": {"reset": "before"}}])";
constexpr auto refused = R"([{"match": {"uploadPut": true, "times": -1}, "action": {"status": 403}}])";

} // namespace

class UploadQueueTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        QVERIFY2(bench_.prepare(), bench_.drive().log().constData());
        bench_.service().fetcherService()->setTimeout(60s); // of real time: a busy computer is no fault
        folder_ = std::make_unique<QTemporaryDir>();
        time_ = std::make_shared<ManualTimeSource>();
        account_ = ann;
        limits_ = {.comesBack = true};
        restart();
    }
    void cleanup() {
        queue_.reset();
        journal_.reset();
    }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    // A new program goes on in the middle of a file, and does not send twice what the Drive holds.
    void goesOnInTheNextRun() {
        const QByteArray content = sampleBytes(3000000);
        const QByteArray large = makeFile("large", content);
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"uploadPut": true}, "action": {"reset": {"afterRequestBytes": 1500000}}},
                {"match": {"uploadPut": true, "times": -1}, "action": {"reset": "before"}}])"));
        queue_->add({.path = large});
        QTRY_VERIFY_WITH_TIMEOUT(isTroubled("large"), patiently);
        queue_->add(QList<UploadRequest>{{.path = makeFile("into a folder", "1"), .folderName = u"Kept"_s},
                                         {.path = makeFile("removed", "2"), .removeSource = true}});
        QTRY_VERIFY_WITH_TIMEOUT(isTroubled("removed"), patiently);
        queue_->pause({numberOf("into a folder")});
        restart();
        QTRY_COMPARE_WITH_TIMEOUT(queue_->remaining().size(), 3, patiently);
        QCOMPARE(stateOf("into a folder"), UploadState::paused);
        QCOMPARE(QFile::exists(pathOf("removed")), true);

        bench_.drive().clearFaults();
        queue_->resume({numberOf("into a folder")});
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"large"_s), QStringList{md5Of(content)});
        QCOMPARE(bench_.copiesOf(u"into a folder"_s), QStringList{md5Of("1")});
        QCOMPARE(bench_.copiesOf(u"removed"_s), QStringList{md5Of("2")});
        QTRY_VERIFY(!QFile::exists(pathOf("removed")));
        QVERIFY(QFile::exists(QFile::decodeName(large)));
        QVERIFY2(bench_.duplicateBytes() <= 1500000, "what had arrived was sent again");

        restart(); // nothing is left
        QVERIFY(queue_->numbers().isEmpty());
    }

    // The answer to the last byte is lost together with the program.
    void aFileThatHasArrivedIsNotSentAgain() {
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"uploadPut": true}, "action": {"status": 503, "commitFirst": true}},
                {"match": {"uploadPut": true, "times": -1}, "action": {"reset": "before"}}])"));
        queue_->add({.path = makeFile("once", sampleBytes(400000))});
        QTRY_VERIFY_WITH_TIMEOUT(isTroubled("once"), patiently);
        restart();
        QTRY_COMPARE_WITH_TIMEOUT(queue_->remaining().size(), 1, patiently);
        bench_.drive().clearFaults();
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"once"_s).size(), 1);
        QCOMPARE(failures_, 0);
    }

    void aSourceThatChangedIsTold() {
        QVERIFY(bench_.drive().orderFaults(blocked));
        queue_->add({.path = makeFile("changing", sampleBytes(300000))});
        QTRY_VERIFY_WITH_TIMEOUT(isTroubled("changing"), patiently);
        const QByteArray now = sampleBytes(300001);
        start();
        makeFile("changing", now); // before it is read what was meant
        bench_.drive().clearFaults();
        QSignalSpy told(queue_.get(), &UploadQueue::sourceChanged);
        QTRY_COMPARE_WITH_TIMEOUT(told.size(), 1, patiently);
        QCOMPARE(stateOf("changing"), UploadState::changed);
        restart(); // still a question
        QCOMPARE(stateOf("changing"), UploadState::changed);
        QCOMPARE(bench_.copiesOf(u"changing"_s), QStringList());

        queue_->retry({numberOf("changing")});
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"changing"_s), QStringList{md5Of(now)});
    }

    void whatFailedWaitsForTheUser() {
        QVERIFY(bench_.drive().orderFaults(refused));
        queue_->add({.path = makeFile("refused", "1")});
        QTRY_COMPARE_WITH_TIMEOUT(failures_, 1, patiently);
        QVERIFY(queue_->remaining().isEmpty());
        bench_.drive().clearFaults();
        restart();
        QCOMPARE(stateOf("refused"), UploadState::failed);
        QVERIFY(!queue_->find(numberOf("refused"))->reason.isEmpty());
        queue_->retry({numberOf("refused")});
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"refused"_s).size(), 1);
    }

    // An earlier state of the file has arrived, and does not stand in the way of the later one.
    void whatChangedWhileItWasSentIsTriedAgain() {
        const QByteArray before = sampleBytes(1000);
        const QByteArray now = sampleBytes(1001);
        connect(queue_.get(), &UploadQueue::progressed, this, [&](const UploadRequest&, qint64 sent) {
            if (sent == before.size())
                makeFile("edited", now);
        });
        queue_->add({.path = makeFile("edited", before)});
        QTRY_COMPARE_WITH_TIMEOUT(failures_, 1, patiently);
        QCOMPARE(bench_.copiesOf(u"edited"_s), QStringList{md5Of(before)});
        queue_->retry({numberOf("edited")});
        QTRY_VERIFY_WITH_TIMEOUT(bench_.copiesOf(u"edited"_s).contains(md5Of(now)), patiently);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(failures_, 1);
    }

    void uploadsWaitForTheirAccount() {
        QVERIFY(bench_.drive().orderFaults(blocked));
        queue_->add({.path = makeFile("of ann", sampleBytes(300000))});
        QTRY_VERIFY_WITH_TIMEOUT(isTroubled("of ann"), patiently);
        queue_->setAccount(bob);
        bench_.drive().clearFaults();
        QCOMPARE(queue_->runningCount(), 0U);
        QVERIFY(queue_->remaining().isEmpty());
        queue_->add({.path = makeFile("of bob", "b")});
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(queue_->otherAccounts(), QStringList{ann});
        account_ = bob;
        restart();
        QTRY_COMPARE(queue_->otherCount(), 1);
        QVERIFY(bench_.copiesOf(u"of ann"_s).isEmpty());
        queue_->adoptOthers();
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"of ann"_s).size(), 1);
    }

    void orderPauseAndCancel() {
        QStringList started;
        queue_->setHeldBack(true);
        queue_->add(QList<UploadRequest>{{.path = makeFile("a", "a")},
                                         {.path = makeFile("b", "b")},
                                         {.path = makeFile("c", "c")},
                                         {.path = makeFile("d", "d")}});
        QTRY_COMPARE(queue_->waitingCount(), 4U);
        queue_->setOrder({numberOf("d"), numberOf("b")});
        queue_->cancel({numberOf("a")});
        start();
        queue_->setHeldBack(true);
        QTRY_COMPARE(queue_->waitingCount(), 3U);
        connect(queue_.get(), &UploadQueue::started, this,
                [&started](const UploadRequest& request) { started.append(nameForPeople(request.path)); });
        queue_->setHeldBack(false);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(started, (QStringList{u"d"_s, u"b"_s, u"c"_s}));
        QVERIFY(bench_.copiesOf(u"a"_s).isEmpty());
    }

    // One that does not get on makes room for the others, and comes back.
    void troubleDoesNotHoldUpOthers() {
        limits_ = {.uploadsAtOnce = 1, .patience = 0ms, .comesBack = true};
        restart();
        resumer_->stop();
        QVERIFY(bench_.drive().orderFaults(R"([{"match": {"uploadPut": true}, "action": {"status": 503}}])"));
        queue_->add(QList<UploadRequest>{{.path = makeFile("first", "1")}, {.path = makeFile("second", "2")}});
        QTRY_COMPARE_WITH_TIMEOUT(queue_->remaining().size(), 1, patiently);
        QCOMPARE(stateOf("first"), UploadState::resting);
        QCOMPARE(bench_.copiesOf(u"second"_s).size(), 1);
        QCOMPARE(failures_, 0);
        time_->advance(5min);
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"first"_s).size(), 1);
    }

    // Those that have rested while all places are taken are not looked at again and again.
    void whoHasRestedWaitsForAPlace() {
        limits_ = {.uploadsAtOnce = 1, .patience = 0ms, .comesBack = true};
        restart();
        resumer_->stop();
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"uploadPut": true}, "action": {"status": 503}},
                {"match": {"uploadPut": true, "times": -1}, "action": {"stall": {"where": "before", "seconds": 60}}}])"));
        queue_->add(QList<UploadRequest>{{.path = makeFile("rested", "1")}, {.path = makeFile("slow", "2")}});
        QTRY_COMPARE_WITH_TIMEOUT(stateOf("slow"), UploadState::running, patiently);
        QCOMPARE(stateOf("rested"), UploadState::resting);
        time_->advance(5min);
        QCOMPARE(stateOf("rested"), UploadState::resting);
        QCOMPARE(time_->pendingTimers(), 0U);
        queue_->pause({numberOf("slow")});
        bench_.drive().clearFaults();
        QTRY_COMPARE_WITH_TIMEOUT(bench_.copiesOf(u"rested"_s).size(), 1, patiently);
    }

    // What was found for those that wait is of one Drive, and may be gone when their turn has come.
    void theirFolderIsLookedForAgain() {
        limits_ = {.uploadsAtOnce = 1, .comesBack = true};
        restart();
        QVERIFY(bench_.drive().orderFaults(blocked));
        queue_->add(QList<UploadRequest>{{.path = makeFile("first", "1"), .folderName = u"Kept"_s},
                                         {.path = makeFile("gone", "2"), .folderName = u"Kept"_s},
                                         {.path = makeFile("adopted", "3"), .folderName = u"Kept"_s}});
        QTRY_VERIFY_WITH_TIMEOUT(isTroubled("first"), patiently);
        const QString folder = queue_->find(numberOf("gone"))->request.parentId;
        QVERIFY(!folder.isEmpty());
        queue_->pause({numberOf("adopted"), numberOf("first")});
        QVERIFY(bench_.call(GTLQueryDrive::queryForFilesDeleteWithFileId(folder)).ok());
        bench_.drive().clearFaults();
        QTRY_COMPARE_WITH_TIMEOUT(failures_, 1, patiently);
        queue_->retry({numberOf("gone")});
        QTRY_COMPARE_WITH_TIMEOUT(bench_.copiesOf(u"gone"_s).size(), 1, patiently);
        queue_->setAccount(bob);
        queue_->adoptOthers();
        queue_->resume({numberOf("adopted"), numberOf("first")});
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(failures_, 1);
    }

    // Whoever hears of an upload may end it on the spot.
    void cancelledByWhoeverHearsOfIt() {
        limits_ = {.patience = 0ms, .comesBack = true};
        restart();
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"uploadPut": true}, "action": {"status": 403}},
                {"match": {"uploadPut": true}, "action": {"status": 503}}])"));
        UploadState awaited = UploadState::waiting; // also when the file was looked at
        connect(queue_.get(), &UploadQueue::changed, this, [this, &awaited](qint64 number) {
            if (const QueuedUpload* upload = queue_->find(number); upload && upload->state == awaited)
                queue_->cancel({number});
        });
        queue_->setHeldBack(true);
        queue_->add({.path = makeFile("looked at", "1")});
        QTRY_VERIFY_WITH_TIMEOUT(queue_->numbers().isEmpty(), patiently);
        queue_->setHeldBack(false);
        for (const auto state :
             {UploadState::failed, UploadState::resting, UploadState::paused, UploadState::running}) {
            awaited = state;
            queue_->add({.path = makeFile("file", "2")});
            if (state == UploadState::paused)
                queue_->pause(queue_->numbers());
            QTRY_VERIFY_WITH_TIMEOUT(queue_->numbers().isEmpty(), patiently);
        }
        QVERIFY(bench_.copiesOf(u"file"_s).isEmpty());
        restart();
        QVERIFY(queue_->numbers().isEmpty());
    }

    // Of what could not be read, nobody knows which files it needs.
    void whatCouldNotBeReadNeedsItsFiles() {
        const QString path = folder_->filePath(u"uploads.sqlite"_s);
        queue_.reset();
        journal_.reset();
        QVERIFY(QFile::remove(path) && QDir().mkdir(path));
        restart();
        QVERIFY(!queue_->areAllKnown());
        queue_->add({.path = makeFile("sent anyway", "1")});
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"sent anyway"_s).size(), 1);
    }

    // One that means nothing here: perhaps another version of the program knows what to do with it.
    void whatMeansNothingStaysWrittenDown() {
        queue_->setHeldBack(true);
        queue_->add({.path = makeFile("readable", "1")});
        JournalEntry strange;
        strange.number = 7;
        strange.account = ann;
        strange.request = "{}";
        journal_->write({strange});
        start();
        QSignalSpy told(journal_.get(), &UploadJournal::troubled);
        QTRY_COMPARE(told.size(), 1);
        QVERIFY(!queue_->areAllKnown());
        QTRY_VERIFY_WITH_TIMEOUT(isIdle(), patiently);
        QCOMPARE(bench_.copiesOf(u"readable"_s).size(), 1);
        QCOMPARE(failures_, 0);
        std::optional<QList<JournalEntry>> left;
        journal_->load(this, [&](const Result<QList<JournalEntry>>& entries) { left = entries.valueOr({}); });
        QTRY_VERIFY(left);
        QCOMPARE(*left, QList<JournalEntry>{strange});
    }

    void filesOfFoldersAreNeeded() {
        queue_->setHeldBack(true);
        queue_->add({.path = makeFile("needed", "1")});
        QCOMPARE(queue_->paths(), QSet<QByteArray>{QFile::encodeName(pathOf("needed"))});
        start(); // and as long as nobody knows
        QVERIFY(!queue_->areAllKnown());
        QTRY_VERIFY(queue_->areAllKnown());
        QCOMPARE(queue_->paths(), QSet<QByteArray>{QFile::encodeName(pathOf("needed"))});
    }

private:
    void start() {
        queue_.reset();
        folders_.reset();
        journal_.reset();
        failures_ = 0;
        troubled_.clear();
        const auto driveService = [this] {
            return std::shared_ptr<GTLServiceDrive>(std::shared_ptr<void>(), &bench_.service()); // the bench keeps it
        };
        folders_ = std::make_unique<DestinationFolders>(driveService, time_, limits_.patience);
        journal_ = std::make_unique<UploadJournal>(QFile::encodeName(folder_->filePath(u"uploads.sqlite"_s)));
        queue_ = std::make_unique<UploadQueue>(driveService, *folders_, time_, limits_);
        queue_->setAccount(account_);
        queue_->setJournal(*journal_);
        connect(queue_.get(), &UploadQueue::finished, this,
                [this](const UploadRequest&, const Result<UploadRun::Outcome>& outcome) { failures_ += !outcome; });
        connect(queue_.get(), &UploadQueue::troubled, this,
                [this](const UploadRequest& request) { troubled_.insert(request.path); });
        connect(queue_.get(), &UploadQueue::over, this, [](const UploadRequest& request) {
            if (request.removeSource)
                QFile::remove(QFile::decodeName(request.path));
        });
        resumer_ = std::make_unique<QTimer>(); // the queue's time stands still: what pauses goes on by this
        connect(resumer_.get(), &QTimer::timeout, queue_.get(), [this] {
            for (const qint64 number : queue_->numbers()) {
                if (queue_->find(number)->state == UploadState::running)
                    return queue_->tryNow();
            }
        });
        resumer_->start(500ms);
    }
    // As after the sudden end of the program.
    void restart() {
        start();
        QTRY_VERIFY_WITH_TIMEOUT(!queue_->isReading(), patiently);
    }

    QByteArray makeFile(const char* name, const QByteArray& content) {
        QFile file(pathOf(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0)
            qFatal("A file for the test can't be written.");
        return QFile::encodeName(file.fileName());
    }
    QString pathOf(const char* name) const { return folder_->filePath(QString::fromLatin1(name)); }
    qint64 numberOf(const char* name) const {
        for (const qint64 number : queue_->numbers()) {
            if (queue_->find(number)->request.path == QFile::encodeName(pathOf(name)))
                return number;
        }
        return 0;
    }
    UploadState stateOf(const char* name) const {
        const QueuedUpload* upload = queue_->find(numberOf(name));
        return upload ? upload->state : UploadState::waiting;
    }
    bool isTroubled(const char* name) const { return troubled_.contains(QFile::encodeName(pathOf(name))); }
    bool isIdle() const { return !queue_->isReading() && queue_->remaining().isEmpty(); }

    FaultBench bench_;
    std::unique_ptr<QTemporaryDir> folder_;
    std::shared_ptr<ManualTimeSource> time_; // the queue's; the fetchers' goes on
    QString account_;
    UploadLimits limits_;
    std::unique_ptr<DestinationFolders> folders_;
    std::unique_ptr<UploadJournal> journal_;
    std::unique_ptr<UploadQueue> queue_;
    std::unique_ptr<QTimer> resumer_;
    int failures_ = 0;
    QSet<QByteArray> troubled_; // paths
};

QTEST_GUILESS_MAIN(UploadQueueTest)
#include "tst_uploadqueue.moc"
