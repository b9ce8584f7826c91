// The sign-in under fire: many refusals at once, refused and failing refreshes, and clocks that jump.

#include "driveapi/GTLDriveAbout.h"
#include "tests/faults/FaultBench.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;

class SignInFaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY2(bench_.prepare(), bench_.drive().log().constData()); }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    void fiftyRefusalsAtOnceMakeOneRefresh() {
        bench_.service().fetcherService()->setMaxRunningFetchersPerHost(50);
        const int before = bench_.requestCount(tokenRequests());
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"pathPrefix": "/rpc"}, "action": {"expireAccessToken": true}}])"));
        QObject context;
        int answered = 0;
        int failed = 0;
        for (int i = 0; i < 50; ++i) {
            bench_.service().executeQuery(
                GTLQueryDrive::queryForAboutGet(), &context,
                [&](const GTLServiceTicketPtr&, const GTLObjectPtr&, const MaybeError& error) {
                    ++answered;
                    failed += error ? 1 : 0;
                });
        }
        QTRY_COMPARE_WITH_TIMEOUT(answered, 50, 30000);
        QCOMPARE(failed, 0);
        QCOMPARE(bench_.requestCount(tokenRequests()) - before, 1);
    }

    void refusedAgainAfterTheRefresh() {
        const int before = bench_.requestCount(tokenRequests());
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"pathPrefix": "/rpc", "times": -1}, "action": {"status": 401}}])"));
        const auto reply = bench_.call(GTLQueryDrive::queryForAboutGet());
        QVERIFY(!reply);
        QVERIFY2(reply.error().isHTTPStatus(401), qPrintable(reply.error().description()));
        QCOMPARE(bench_.requestCount(tokenRequests()) - before, 1);
    }

    void refreshFails_data() {
        QTest::addColumn<QByteArray>("tokenFault");
        QTest::addColumn<int>("times");
        QTest::addColumn<bool>("succeeds");
        QTest::addColumn<RefreshFailure>("failure");
        QTest::addColumn<bool>("nextSucceeds"); // once the fault is over
        QTest::newRow("refused") << QByteArray(R"({"status": 400, "contentType": "application/json",
                                     "body": {"error": "invalid_grant"}})")
                                 << 1 << false << RefreshFailure::refused << true;
        QTest::newRow("503 once") << QByteArray(R"({"status": 503})") << 1 << true << RefreshFailure::none << true;
        QTest::newRow("503 for now") << QByteArray(R"({"status": 503})") << -1 << false << RefreshFailure::momentary
                                     << true;
        QTest::newRow("500") << QByteArray(R"({"status": 500})") << 1 << false << RefreshFailure::momentary << true;
        QTest::newRow("connection lost for now")
            << QByteArray(R"({"reset": "before"})") << -1 << false << RefreshFailure::momentary << true;
        QTest::newRow("HTML") << QByteArray(R"({"status": 200, "contentType": "text/html", "body": "<html>"})") << 1
                              << false << RefreshFailure::momentary << true;
        QTest::newRow("no JSON") << QByteArray(R"({"malformedJson": true})") << 1 << false << RefreshFailure::momentary
                                 << true;
    }
    void refreshFails() {
        QFETCH(QByteArray, tokenFault);
        QFETCH(int, times);
        QFETCH(bool, succeeds);
        QFETCH(RefreshFailure, failure);
        QFETCH(bool, nextSucceeds);
        const QString refreshToken = bench_.authentication().refreshToken();
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"pathPrefix": "/rpc"}, "action": {"expireAccessToken": true}},
                {"match": {"pathPrefix": "/o/oauth2/token", "times": )" +
            QByteArray::number(times) + R"(}, "action": )" + tokenFault + "}]"));
        const auto reply = bench_.call(GTLQueryDrive::queryForAboutGet());
        QCOMPARE(reply.ok(), succeeds);
        QCOMPARE(bench_.authentication().lastRefreshFailure(), failure);
        QCOMPARE(bench_.authentication().refreshToken(), refreshToken); // the sign-in stays
        bench_.drive().clearFaults();
        QCOMPARE(bench_.call(GTLQueryDrive::queryForAboutGet()).ok(), nextSucceeds);
    }

    void serversClockJumps() {
        // A day ahead every token has expired; the client learns it from the refusal and goes on.
        QVERIFY(bench_.drive().orderFaults(
            R"([{"match": {"pathPrefix": "/rpc"}, "action": {"clockSkewSeconds": 86400}}])"));
        QVERIFY(bench_.call(GTLQueryDrive::queryForAboutGet()).ok());
        QVERIFY(
            bench_.drive().orderFaults(R"([{"match": {"pathPrefix": "/rpc"}, "action": {"clockSkewSeconds": 0}}])"));
        QVERIFY(bench_.call(GTLQueryDrive::queryForAboutGet()).ok());
    }

private:
    static QString tokenRequests() { return QStringLiteral("POST /o/oauth2/token"); }

    FaultBench bench_;
};

QTEST_GUILESS_MAIN(SignInFaultsTest)
#include "tst_signinfaults.moc"
