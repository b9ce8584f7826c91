// The signals that end the program, and those that do not.
#include "platform/linux/session/PosixSessionEnd.h"
#include "tests/platform/contracts/SessionEndContract.h"
#include "tests/platform/fakes/FakeSessionEnd.h"
#include "tests/platform/session/HelperProcess.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <QSignalSpy>

#include <array>
#include <csignal>
#include <cstddef>
#include <thread>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

} // namespace

class SessionEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFakeKeepsTheContract() {
        auto fake = std::make_unique<FakeSessionEnd>();
        FakeSessionEnd& told = *fake;
        sessionEndKeepsItsContract(std::move(fake), [&told] { told.requestEnd(); });
    }

    void theRealOneKeepsTheContract_data() {
        QTest::addColumn<std::function<void()>>("reason");
        const auto row = [](const char* title, std::function<void()> reason) { QTest::newRow(title) << reason; };
        row("SIGTERM", [] { ::kill(::getpid(), SIGTERM); });
        row("SIGHUP", [] { ::kill(::getpid(), SIGHUP); });
        row("another thread gets it", [] { std::thread([] { std::raise(SIGHUP); }).join(); });
        // What the toolkit emits on the session manager's behalf; nobody reads the manager.
        row("the session manager's word", [] {
            alignas(std::max_align_t) std::array<char, 256> nobody{};
            Q_EMIT qGuiApp->commitDataRequest(*reinterpret_cast<QSessionManager*>(nobody.data()));
        });
    }
    void theRealOneKeepsTheContract() {
        QFETCH(std::function<void()>, reason);
        sessionEndKeepsItsContract(std::make_unique<PosixSessionEnd>(), reason);
    }

    // What a signal does is undone with the object: without one, it ends the program as it would any other.
    void afterwardsSignalsEndTheProgram() {
        HelperProcess helper({QStringLiteral("over")});
        QCOMPARE(helper.nextLine(), QByteArray("ready"));
        helper.signal(SIGTERM);
        QCOMPARE(helper.endingSignal(), SIGTERM);
    }

    void aSignalIsToldByTheEventLoopAlone() {
        PosixSessionEnd sessionEnd;
        QSignalSpy ended(&sessionEnd, &SessionEnd::endRequested);
        ::kill(::getpid(), SIGINT);
        QVERIFY(ended.isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, patience);
    }

    void whatTheProgramWasToldToIgnoreStaysIgnored() {
        std::signal(SIGHUP, SIG_IGN);
        {
            PosixSessionEnd sessionEnd;
            QSignalSpy ended(&sessionEnd, &SessionEnd::endRequested);
            ::kill(::getpid(), SIGHUP);
            ::kill(::getpid(), SIGTERM);
            QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, patience);
        }
        QVERIFY(std::signal(SIGHUP, SIG_DFL) == SIG_IGN);
    }

    void impatienceIsHeard() {
        const QStringList role{QStringLiteral("end")};
        HelperProcess patient(role), hasty(role);
        QCOMPARE(patient.nextLine(), QByteArray("ready"));
        QCOMPARE(hasty.nextLine(), QByteArray("ready"));
        for (int i = 0; i < 2; ++i) { // a service manager, or a terminal that closes
            patient.signal(SIGTERM);
            QCOMPARE(patient.nextLine(), QByteArray("end"));
            patient.signal(SIGHUP);
            QCOMPARE(patient.nextLine(), QByteArray("end"));
        }
        QVERIFY(patient.isRunning());
        hasty.signal(SIGINT);
        QCOMPARE(hasty.nextLine(), QByteArray("end"));
        hasty.signal(SIGINT);
        QCOMPARE(hasty.endingSignal(), SIGINT);
    }

    // What the keyring's library does, on a thread of its own, when the session bus goes away.
    void losingTheBusEndsNothing() {
        PosixSessionEnd sessionEnd;
        QSignalSpy ended(&sessionEnd, &SessionEnd::endRequested);
        std::thread([] { std::raise(SIGTERM); }).join();
        ::kill(::getpid(), SIGTERM);
        QTRY_VERIFY_WITH_TIMEOUT(!ended.isEmpty(), patience);
        QCoreApplication::processEvents();
        QCOMPARE(ended.size(), 1);
    }
};

QTEST_MAIN(SessionEndTest)
#include "tst_sessionend.moc"
