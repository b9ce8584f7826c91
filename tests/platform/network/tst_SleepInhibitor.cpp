// The fake, and the real thing with each service that a desktop may have.
#include "platform/linux/network/DesktopSleepInhibitor.h"
#include "tests/platform/contracts/SleepInhibitorContract.h"
#include "tests/platform/fakes/FakeSleepInhibitor.h"
#include "tests/platform/network/PlayedSleepServices.h"

#include <QDBusPendingCall>

using namespace quenby;
using namespace quenby::testing;

namespace {

using Does = PlayedSleepService::Does;

const QString uploads = QStringLiteral("Uploads");

std::unique_ptr<PlayedSleepService> makeService(const QString& kind) {
    if (kind == QLatin1String("login"))
        return std::make_unique<PlayedLoginManager>();
    if (kind == QLatin1String("power"))
        return std::make_unique<PlayedPowerManager>();
    return std::make_unique<PlayedSleepPortal>();
}

// Both kinds of bus are the test's own: the services' names tell them apart.
std::unique_ptr<DesktopSleepInhibitor> makeInhibitor() {
    return std::make_unique<DesktopSleepInhibitor>(QDBusConnection::sessionBus(), QDBusConnection::sessionBus());
}

} // namespace

class tst_SleepInhibitor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fakeKeepsTheContract() {
        FakeSleepInhibitor inhibitor;
        sleepInhibitorKeepsItsContract(inhibitor, [&inhibitor] { return inhibitor.reasons(); });
    }

    void realKeepsTheContract_data() { eachService(); }
    void realKeepsTheContract() {
        QFETCH(QString, kind);
        const auto service = makeService(kind);
        const auto inhibitor = makeInhibitor();
        sleepInhibitorKeepsItsContract(*inhibitor, [&service] { return service->reasons(); });
    }

    void lateAnswerIsGivenBack_data() { eachService(); }
    void lateAnswerIsGivenBack() {
        QFETCH(QString, kind);
        const auto service = makeService(kind);
        service->does = Does::wait;
        auto inhibitor = makeInhibitor();
        auto hold = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(service->questions, 1, 20'000);
        hold.reset();
        service->grantLate();
        QCOMPARE(service->reasons(), QStringList{uploads});
        QTRY_VERIFY_WITH_TIMEOUT(service->reasons().isEmpty(), 20'000);
    }

    void sleepIsBlockedInTheProgramsName() {
        PlayedLoginManager login;
        const auto inhibitor = makeInhibitor();
        const auto hold = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(login.reasons(), QStringList{uploads}, 20'000);
        QCOMPARE(login.lastArguments,
                 (QStringList{QStringLiteral("sleep"), QStringLiteral("Quenby"), QStringLiteral("block")}));
    }

    void whoRefusesIsFollowedByTheNext() {
        PlayedLoginManager login;
        PlayedPowerManager power;
        PlayedSleepPortal portal;
        login.does = Does::refuse;
        const auto inhibitor = makeInhibitor();
        auto hold = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(power.reasons(), QStringList{uploads}, 20'000);
        power.does = Does::refuse;
        const auto second = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(portal.reasons(), QStringList{uploads}, 20'000);
        QVERIFY(inhibitor->unavailableBecause().isEmpty());

        portal.does = Does::refuse;
        const auto third = inhibitor->hold(uploads);
        QVERIFY(third != nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(!inhibitor->unavailableBecause().isEmpty(), 20'000);
        login.does = Does::grant;
        const auto fourth = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(login.reasons(), QStringList{uploads}, 20'000);
        QVERIFY(inhibitor->unavailableBecause().isEmpty());
    }

    void serviceThatComesOrComesBackIsAsked_data() { eachService(); }
    void serviceThatComesOrComesBackIsAsked() {
        QFETCH(QString, kind);
        const auto inhibitor = makeInhibitor();
        auto hold = inhibitor->hold(uploads);
        QTRY_VERIFY_WITH_TIMEOUT(!inhibitor->unavailableBecause().isEmpty(), 20'000); // there is none yet
        for (int round = 0; round < 2; ++round) {
            auto service = makeService(kind);
            QTRY_COMPARE_WITH_TIMEOUT(service->reasons(), QStringList{uploads}, 20'000);
            service.reset();
            QTRY_VERIFY_WITH_TIMEOUT(!inhibitor->unavailableBecause().isEmpty(), 20'000);
        }
        hold.reset();
        const auto service = makeService(kind);
        const auto other = inhibitor->hold(QStringLiteral("Other")); // comes after all that the first could ask
        QTRY_COMPARE_WITH_TIMEOUT(service->reasons(), QStringList{QStringLiteral("Other")}, 20'000);
        QCOMPARE(service->questions, 1);
    }

    void anotherServiceTakesOver() {
        auto login = std::make_unique<PlayedLoginManager>();
        PlayedPowerManager power;
        const auto inhibitor = makeInhibitor();
        auto hold = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(login->reasons(), QStringList{uploads}, 20'000);
        QCOMPARE(power.questions, 0);
        login.reset();
        QTRY_COMPARE_WITH_TIMEOUT(power.reasons(), QStringList{uploads}, 20'000);
        hold.reset();
        QTRY_VERIFY_WITH_TIMEOUT(power.reasons().isEmpty(), 20'000);
    }

    void holdOutlivesTheInhibitor() {
        PlayedPowerManager power;
        auto inhibitor = makeInhibitor();
        auto hold = inhibitor->hold(uploads);
        QTRY_COMPARE_WITH_TIMEOUT(power.reasons(), QStringList{uploads}, 20'000);
        QVERIFY(arrivedFrom(QStringLiteral("org.freedesktop.PowerManagement")));
        inhibitor.reset();
        hold.reset();
        QTRY_VERIFY_WITH_TIMEOUT(power.reasons().isEmpty(), 20'000);
    }

    void withoutABusNothingHolds() {
        const QDBusConnection none(QStringLiteral("none"));
        DesktopSleepInhibitor inhibitor(none, none);
        QVERIFY(!inhibitor.unavailableBecause().isEmpty());
        QVERIFY(inhibitor.hold(uploads) != nullptr);
    }

private:
    // What a service says arrives in its order: with the answer to this, all before it is here.
    static bool arrivedFrom(const QString& service) {
        const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(
            QDBusMessage::createMethodCall(service, QStringLiteral("/"), QString(), QStringLiteral("Nothing")));
        if (!QTest::qWaitFor([&call] { return call.isFinished(); }, 20'000))
            return false;
        QCoreApplication::processEvents();
        return true;
    }
    static void eachService() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"login", "power", "portal"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
};

QTEST_MAIN(tst_SleepInhibitor)
#include "tst_SleepInhibitor.moc"
