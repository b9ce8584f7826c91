// The fake, and the real thing with the network service played on the test's own bus.
#include "platform/linux/network/NetworkManagerCost.h"
#include "tests/platform/contracts/NetworkCostContract.h"
#include "tests/platform/fakes/FakeNetworkCost.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <memory>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString serviceName = QStringLiteral("org.freedesktop.NetworkManager");
const QString servicePath = QStringLiteral("/org/freedesktop/NetworkManager");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

enum Metered : uint { unknown = 0, yes = 1, no = 2, guessYes = 3, guessNo = 4 };

} // namespace

class NetworkManager : public QDBusVirtualObject {
public:
    uint metered = no;
    bool answersAtOnce = true;
    int questions = 0;

    NetworkManager()
        : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, serviceName)) {
        bus_.registerVirtualObject(servicePath, this);
        bus_.registerService(serviceName);
    }
    ~NetworkManager() override {
        bus_.unregisterObject(servicePath);
        bus_.unregisterService(serviceName);
        QDBusConnection::disconnectFromBus(serviceName);
    }

    void tell(const QString& interface, const QVariantMap& values) {
        QDBusMessage signal = QDBusMessage::createSignal(servicePath, properties, QStringLiteral("PropertiesChanged"));
        signal << interface << values << QStringList();
        bus_.send(signal);
    }
    void become(uint state) {
        metered = state;
        tell(serviceName, {{QStringLiteral("Metered"), state}});
    }
    // The answer to the question that was left waiting.
    void answerLate(uint state) { answer(question_, state); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QVariantList wanted{serviceName, QStringLiteral("Metered")};
        if (message.interface() != properties || message.member() != QLatin1String("Get") ||
            message.arguments() != wanted)
            return false;
        ++questions;
        question_ = message;
        return !answersAtOnce || answer(message, metered);
    }

private:
    bool answer(const QDBusMessage& question, uint state) {
        return bus_.send(question.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(state)))));
    }

    QDBusConnection bus_;
    QDBusMessage question_;
};

class tst_NetworkManagerCost : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fakeKeepsTheContract() {
        FakeNetworkCost cost;
        networkCostKeepsItsContract(cost, [&cost](bool isMetered) { cost.setMetered(isMetered); });
    }

    void realKeepsTheContract() {
        NetworkManager manager;
        NetworkManagerCost cost(QDBusConnection::sessionBus());
        QVERIFY(arrivedSoFar());
        networkCostKeepsItsContract(cost, [&manager](bool isMetered) {
            manager.become(isMetered ? yes : no);
            QVERIFY(arrivedSoFar());
        });
    }

    void everyStateOfTheServiceHasItsMeaning() {
        NetworkManager manager;
        manager.metered = guessYes;
        NetworkManagerCost cost(QDBusConnection::sessionBus());
        QVERIFY(!cost.isMetered()); // nobody waited for the answer
        QTRY_VERIFY_WITH_TIMEOUT(cost.isMetered(), 20'000);
        for (const uint state : {guessNo, unknown, guessYes, no}) {
            manager.become(state);
            QVERIFY(arrivedSoFar());
            QCOMPARE(cost.isMetered(), state == guessYes);
            QCOMPARE(cost.unavailableBecause().isEmpty(), state != unknown);
        }
        manager.tell(serviceName, {{QStringLiteral("Connectivity"), 4U}});
        manager.tell(serviceName + QStringLiteral(".Other"), {{QStringLiteral("Metered"), 1U}});
        QVERIFY(arrivedSoFar());
        QVERIFY(!cost.isMetered());
    }

    void aChangeIsNewerThanALateAnswer() {
        NetworkManager manager;
        manager.answersAtOnce = false;
        NetworkManagerCost cost(QDBusConnection::sessionBus());
        QTRY_COMPARE_WITH_TIMEOUT(manager.questions, 1, 20'000);
        manager.become(yes);
        QTRY_VERIFY_WITH_TIMEOUT(cost.isMetered(), 20'000);
        manager.answerLate(no);
        manager.answersAtOnce = true;
        QVERIFY(arrivedSoFar());
        QVERIFY(cost.isMetered());
    }

    void serviceMayEndAndBeginAgain() {
        NetworkManagerCost cost(QDBusConnection::sessionBus());
        QTRY_VERIFY_WITH_TIMEOUT(!cost.unavailableBecause().isEmpty(), 20'000);
        for (int round = 0; round < 2; ++round) {
            auto manager = std::make_unique<NetworkManager>();
            manager->metered = yes;
            QTRY_VERIFY_WITH_TIMEOUT(cost.isMetered(), 20'000);
            QVERIFY(cost.unavailableBecause().isEmpty());
            manager.reset();
            QTRY_VERIFY_WITH_TIMEOUT(!cost.isMetered(), 20'000);
            QVERIFY(!cost.unavailableBecause().isEmpty());
        }
    }

    void withoutABusNobodyTells() {
        const NetworkManagerCost cost{QDBusConnection(QStringLiteral("none"))};
        QVERIFY(!cost.isMetered());
        QVERIFY(!cost.unavailableBecause().isEmpty());
    }

private:
    // The service's words arrive in their order: with the answer to this, all before it are here.
    static bool arrivedSoFar() {
        QDBusMessage question =
            QDBusMessage::createMethodCall(serviceName, servicePath, properties, QStringLiteral("Get"));
        question << QString() << QString();
        const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(question);
        if (!QTest::qWaitFor([&call] { return call.isFinished(); }, 20'000))
            return false;
        QCoreApplication::processEvents();
        return true;
    }
};

QTEST_MAIN(tst_NetworkManagerCost)
#include "tst_NetworkManagerCost.moc"
