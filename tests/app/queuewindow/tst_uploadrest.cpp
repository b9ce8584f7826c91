// When uploads rest and when the computer is kept awake for them, with the real queue and the real local Drive.

#include "app/queuewindow/UploadRest.h"
#include "app/uploads/UploadQueue.h"
#include "core/DefaultsKeys.h"
#include "tests/faults/FaultBench.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeNetworkCost.h"
#include "tests/platform/fakes/FakeSleepInhibitor.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

} // namespace

class UploadRestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        QVERIFY2(bench_.prepare(), bench_.drive().log().constData());
        time_ = std::make_shared<ManualTimeSource>();
        cost_.setMetered(false);
        for (const QString& key : defaults_.keys())
            defaults_.removeValueForKey(key);
        start();
    }

    // Also in the next run, and when another program writes the setting.
    void restsWhileTheUserWantsIt() {
        rest_->setAllPaused(true);
        start();
        QVERIFY(rest_->areAllPaused());
        add("paused", "1");
        QCOMPARE(queue_->runningCount(), 0U);
        defaults_.removeValueForKey(defaultsKey::uploadsPaused);
        QVERIFY(!rest_->areAllPaused());
        QTRY_VERIFY_WITH_TIMEOUT(queue_->remaining().isEmpty(), patiently);
        QCOMPARE(bench_.copiesOf(u"paused"_s).size(), 1);
    }

    void restsOnMeteredConnections() {
        cost_.setMetered(true);
        add("metered", "1");
        QVERIFY(rest_->isResting());
        QCOMPARE(queue_->runningCount(), 0U);
        rest_->uploadAnyway();
        QTRY_VERIFY_WITH_TIMEOUT(queue_->remaining().isEmpty(), patiently);

        // That was meant for the one connection.
        cost_.setMetered(false);
        QVERIFY(!rest_->isResting());
        cost_.setMetered(true);
        QVERIFY(rest_->isResting());
        defaults_.setValueForKey(defaultsKey::uploadsRestOnMetered, false);
        QVERIFY(!rest_->isResting());
    }

    // What runs is interrupted, and goes on.
    void interruptsWhatRuns() {
        QVERIFY(bench_.drive().orderFaults(blocked_));
        add("interrupted", sampleBytes(300000));
        QTRY_VERIFY_WITH_TIMEOUT(troubles_ > 0, patiently);
        cost_.setMetered(true);
        QCOMPARE(queue_->runningCount(), 0U);
        QCOMPARE(awake_.reasons(), QStringList());
        bench_.drive().clearFaults();
        cost_.setMetered(false);
        QTRY_VERIFY_WITH_TIMEOUT(queue_->remaining().isEmpty(), patiently);
        QCOMPARE(bench_.copiesOf(u"interrupted"_s).size(), 1);
    }

    void keepsAwakeWhileOneGetsOn() {
        QVERIFY(bench_.drive().orderFaults(blocked_));
        QCOMPARE(awake_.reasons(), QStringList());
        add("awake", sampleBytes(300000));
        QCOMPARE(awake_.reasons().size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(troubles_ > 0, patiently);
        time_->advance(1min);
        QCOMPARE(awake_.reasons().size(), 1); // the trouble may be short
        time_->advance(1min);
        QCOMPARE(awake_.reasons(), QStringList());

        bench_.drive().clearFaults();
        defaults_.setValueForKey(defaultsKey::uploadRateLimit, 100); // bytes per second: it takes a while
        queue_->tryNow();
        QTRY_COMPARE_WITH_TIMEOUT(awake_.reasons().size(), 1, patiently);
        time_->advance(1h);
        QCOMPARE(awake_.reasons().size(), 1);
        queue_->cancelAll();
        QTRY_COMPARE(awake_.reasons(), QStringList());
    }

private:
    void start() {
        rest_.reset();
        queue_.reset();
        troubles_ = 0;
        const auto driveService = [this] {
            return std::shared_ptr<GTLServiceDrive>(std::shared_ptr<void>(), &bench_.service()); // the bench keeps it
        };
        folders_ = std::make_unique<DestinationFolders>(driveService, bench_.timeSource(), 10min);
        queue_ = std::make_unique<UploadQueue>(driveService, *folders_, bench_.timeSource(), UploadLimits{});
        connect(queue_.get(), &UploadQueue::troubled, this, [this] { ++troubles_; });
        rest_ = std::make_unique<UploadRest>(*queue_, defaults_, cost_, awake_, time_);
    }
    void add(const char* name, const QByteArray& content) { queue_->add({.path = bench_.makeFile(name, content)}); }

    // Announcements are answered, and no byte gets through.
    const QByteArray blocked_ = R"([{"match": {"uploadPut": true, "times": -1}, "action": {"reset": "before"}}])";

    FaultBench bench_;
    FakeDefaults defaults_;
    FakeNetworkCost cost_;
    FakeSleepInhibitor awake_;
    std::shared_ptr<ManualTimeSource> time_; // of the rest alone
    std::unique_ptr<DestinationFolders> folders_;
    std::unique_ptr<UploadQueue> queue_;
    std::unique_ptr<UploadRest> rest_;
    int troubles_ = 0;
};

QTEST_GUILESS_MAIN(UploadRestTest)
#include "tst_uploadrest.moc"
