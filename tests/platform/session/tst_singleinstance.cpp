// One instance on a real bus: among connections of this process, and among processes that hang, stay and die.
#include "platform/linux/session/BusSingleInstance.h"
#include "tests/platform/contracts/SingleInstanceContract.h"
#include "tests/platform/fakes/FakeSingleInstance.h"
#include "tests/platform/session/HelperProcess.h"
#include "tests/support/ManualTimeSource.h"

#include <QDBusConnectionInterface>

#include <csignal>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

// An instance that is on the bus like a process of its own, and behaves like a good program.
struct Instance {
    explicit Instance(const QString& connection)
        : name(connection)
        , object(std::make_unique<BusSingleInstance>(
              QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection), makeSystemTimeSource())) {
        object->setHandover([this] { return work; });
        QObject::connect(object.get(), &SingleInstance::endRequested, object.get(), [this] {
            hasEnded = true;
            QMetaObject::invokeMethod(
                &context, [this] { leave(); }, Qt::QueuedConnection);
        });
    }
    ~Instance() { leave(); }
    // A connection ends with its last user.
    void leave() {
        object.reset();
        QDBusConnection::disconnectFromBus(name);
    }
    void acquire() {
        object->acquire(object.get(), [this](const Handover& handover) {
            hasAcquired = true;
            work += handover;
        });
    }

    QString name;
    std::unique_ptr<BusSingleInstance> object;
    Handover work;
    bool hasAcquired = false;
    bool hasEnded = false;
    QObject context;
};

} // namespace

class SingleInstanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { time_ = std::make_shared<ManualTimeSource>(); }

    void theFakeKeepsTheContract() {
        FakeSingleInstance fake;
        singleInstanceKeepsItsContract(fake, [&](const auto& given) { given(fake.playNewerInstance()); });
    }

    void theBusKeepsTheContract() {
        const QString olderName = QStringLiteral("older"), newerName = QStringLiteral("newer");
        {
            BusSingleInstance older(QDBusConnection::connectToBus(QDBusConnection::SessionBus, olderName), time_);
            const QDBusConnection newerBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, newerName);
            BusSingleInstance newer(newerBus, time_);
            singleInstanceKeepsItsContract(older, [&](const auto& given) {
                newer.acquire(&newer, given);
                // The older one is still on the bus, because this process is.
                QTRY_VERIFY_WITH_TIMEOUT(owner() == newerBus.baseService() && time_->pendingTimers() == 1, patience);
                time_->advance(BusSingleInstance::patience);
            });
            QCOMPARE(time_->pendingTimers(), size_t(0));
        }
        QDBusConnection::disconnectFromBus(olderName);
        QDBusConnection::disconnectFromBus(newerName);
    }

    // Whatever the order: one is left, and it has all of the work, once.
    void severalNewcomersAtOnce() {
        Instance older(QStringLiteral("instance"));
        older.acquire();
        QTRY_VERIFY_WITH_TIMEOUT(older.hasAcquired, patience);
        older.work = {"work"};
        std::vector<std::unique_ptr<Instance>> newcomers;
        for (int i = 0; i < 6; ++i)
            newcomers.push_back(std::make_unique<Instance>(QStringLiteral("newcomer%1").arg(i)));
        for (const auto& one : newcomers)
            one->acquire();
        const auto left = [&] {
            return std::count_if(newcomers.begin(), newcomers.end(), [](const auto& one) { return !one->hasEnded; });
        };
        QTRY_COMPARE_WITH_TIMEOUT(left(), 1, patience);
        QVERIFY(older.hasEnded);
        const auto survivor =
            std::find_if(newcomers.begin(), newcomers.end(), [](const auto& one) { return !one->hasEnded; });
        QTRY_VERIFY_WITH_TIMEOUT((*survivor)->hasAcquired, patience);
        QCOMPARE((*survivor)->work, Handover{"work"});
    }

    void aHugeHandoverIsCut() {
        const QByteArray half(BusSingleInstance::largestHandover / 2, 'x');
        Instance older(QStringLiteral("huge"));
        older.acquire();
        QTRY_VERIFY_WITH_TIMEOUT(older.hasAcquired, patience);
        older.work = {half, half, half};
        Instance newer(QStringLiteral("newer"));
        newer.acquire();
        QTRY_VERIFY_WITH_TIMEOUT(newer.hasAcquired, patience);
        QCOMPARE(newer.work.size(), 2);
        QVERIFY(newer.work == (Handover{half, half}));
    }

    void anotherProcessHandsOverAndLeaves() {
        HelperProcess older({QStringLiteral("instance"), QStringLiteral("a"), QStringLiteral("ü")});
        QCOMPARE(older.nextLine(), QByteArray("acquired"));
        HelperProcess newer({QStringLiteral("instance"), QStringLiteral("b")});
        QCOMPARE(newer.nextLine(), QByteArray("acquired a,ü"));
        QCOMPARE(older.nextLine(), QByteArray("end"));
        QCOMPARE(older.endingSignal(), 0);
        QVERIFY(newer.isRunning());
    }

    void oneThatDoesNotLeaveIsNotWaitedFor() {
        HelperProcess older({QStringLiteral("stubborn"), QStringLiteral("a")});
        QCOMPARE(older.nextLine(), QByteArray("acquired"));
        acquire();
        QCOMPARE(older.nextLine(), QByteArray("end"));
        QTRY_COMPARE_WITH_TIMEOUT(time_->nextDelay(), BusSingleInstance::patience, patience);
        // The answer has come, since only the end is waited for; its timer is the second one.
        QTRY_VERIFY_WITH_TIMEOUT(hasName(), patience);
        QTRY_COMPARE_WITH_TIMEOUT(time_->pendingTimers(), size_t(1), patience);
        QVERIFY(!acquired_);
        time_->advance(BusSingleInstance::patience);
        QTRY_VERIFY_WITH_TIMEOUT(acquired_, patience);
        QCOMPARE(*acquired_, Handover{"a"});
    }

    void oneThatHangsIsNotWaitedFor() {
        HelperProcess older({QStringLiteral("instance"), QStringLiteral("a")});
        QCOMPARE(older.nextLine(), QByteArray("acquired"));
        older.signal(SIGSTOP);
        acquire();
        QTRY_COMPARE_WITH_TIMEOUT(time_->pendingTimers(), size_t(1), patience);
        QVERIFY(!acquired_);
        time_->advance(BusSingleInstance::patience);
        QTRY_VERIFY_WITH_TIMEOUT(acquired_, patience);
        QCOMPARE(*acquired_, Handover());
        // When it comes round, it learns that its time is over.
        older.signal(SIGCONT);
        QCOMPARE(older.nextLine(), QByteArray("end"));
        QVERIFY(hasName());
    }

    void oneThatDiesIsNotWaitedFor() {
        HelperProcess older({QStringLiteral("instance"), QStringLiteral("a")});
        QCOMPARE(older.nextLine(), QByteArray("acquired"));
        older.signal(SIGSTOP);
        acquire();
        QTRY_COMPARE_WITH_TIMEOUT(time_->pendingTimers(), size_t(1), patience);
        older.signal(SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(acquired_, patience);
        QCOMPARE(*acquired_, Handover());
    }

    void withoutABusItIsTheOnlyOne() {
        BusSingleInstance instance(QDBusConnection(QStringLiteral("none")), time_);
        QVERIFY(!instance.unavailableBecause().isEmpty());
        bool hasAcquired = false;
        instance.acquire(this, [&](const Handover&) { hasAcquired = true; });
        QVERIFY(!hasAcquired);
        QTRY_VERIFY_WITH_TIMEOUT(hasAcquired, patience);
    }

    void cleanup() {
        instance_.reset();
        acquired_.reset();
    }

private:
    void acquire() {
        instance_ = std::make_unique<BusSingleInstance>(QDBusConnection::sessionBus(), time_);
        instance_->acquire(this, [this](const Handover& handover) { acquired_ = handover; });
    }
    static QString owner() {
        return QDBusConnection::sessionBus().interface()->serviceOwner(QStringLiteral("org.quenby.Quenby")).value();
    }
    static bool hasName() { return owner() == QDBusConnection::sessionBus().baseService(); }

    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<BusSingleInstance> instance_;
    std::optional<Handover> acquired_;
};

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "tst_singleinstance.moc"
