// What becomes of uploads when the program is killed in the middle of them.

#include "tests/desktop/support/AgentStage.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

#include <csignal>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;
constexpr int large = 6'000'000; // bytes

} // namespace

class AgentUploadsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(stage_.drive.start(), stage_.drive.log().constData()); }
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void aKilledProgramLosesNoUpload();

private:
    int struckFaults() {
        int struck = 0;
        for (const QJsonValue fault : stage_.drive.pendingFaults())
            struck += fault[QStringLiteral("struck")].toInt();
        return struck;
    }
    // Of the uploads of that length, as the Drive counted them.
    QList<qint64> receivedBytes(qint64 length) {
        QList<qint64> received;
        for (const QJsonValue session : stage_.drive.state()[QStringLiteral("uploads")].toArray()) {
            if (session[QStringLiteral("length")].toInteger() == length)
                received.append(session[QStringLiteral("received")].toInteger());
        }
        return received;
    }

    AgentStage stage_;
};

// Four uploads hang in their middle, five wait behind them. The next program has nothing but what was written down.
void AgentUploadsTest::aKilledProgramLosesNoUpload() {
    QVERIFY(stage_.startAndSignIn());
    QTRY_VERIFY_WITH_TIMEOUT(!stage_.keptSignIn().isEmpty(), patience);
    QVERIFY(stage_.drive.orderFaults(R"([{"match": {"uploadPut": true, "times": -1}, "action":
        {"stall": {"where": {"afterRequestBytes": 2000000}, "seconds": 600}}}])"));
    QStringList titles;
    QStringList files;
    for (int i = 0; i < 9; ++i) {
        titles.append(QStringLiteral("Killed %1").arg(i));
        files.append(stage_.home.makeFile(titles.last(), i < 4 ? QByteArray(large, char('0' + i)) : "small"));
    }
    QCOMPARE(stage_.quenby.terminate(), 0);
    QVERIFY(stage_.startSignedIn(files));
    QTRY_COMPARE_WITH_TIMEOUT(struckFaults(), 4, patience);
    ::kill(static_cast<pid_t>(stage_.quenby.pid()), SIGKILL);
    QCOMPARE(stage_.quenby.waitForEnd(), 128 + SIGKILL);
    stage_.drive.clearFaults();

    QVERIFY(stage_.startSignedIn());
    for (const QString& title : titles)
        QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
    QCOMPARE(receivedBytes(large), QList<qint64>(4, large)); // what was there was not sent again
    // Done once and for all.
    QCOMPARE(stage_.quenby.terminate(), 0);
    QVERIFY(stage_.startSignedIn({stage_.home.makeFile(QStringLiteral("Afterwards"), "a")}));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(QStringLiteral("Afterwards")), 1, patience);
    for (const QString& title : titles)
        QCOMPARE(stage_.countInDrive(title), 1);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

QTEST_MAIN(AgentUploadsTest)
#include "tst_agent_uploads.moc"
