// The signals that end the program, and those that do not.
#include "platform/linux/session/PosixSessionEnd.h"
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
    void signals_data() {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGHUP") << SIGHUP;
        QTest::newRow("SIGINT") << SIGINT;
    }
    void signals() {
        QFETCH(int, number);
        PosixSessionEnd sessionEnd;
        QSignalSpy ended(&sessionEnd, &SessionEnd::endRequested);
        ::kill(::getpid(), number);
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

    void theSessionManagersWordEndsIt() {
        PosixSessionEnd sessionEnd;
        QSignalSpy ended(&sessionEnd, &SessionEnd::endRequested);
        // What the toolkit emits on the session manager's behalf; nobody reads the manager.
        alignas(std::max_align_t) std::array<char, 256> nobody{};
        Q_EMIT qGuiApp->commitDataRequest(*reinterpret_cast<QSessionManager*>(nobody.data()));
        QCOMPARE(ended.size(), 1);
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
