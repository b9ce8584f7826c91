// What a token server says with a status of its own choice, over a real connection: whether the sign-in is over.

#include "oauth2/GTMOAuth2Authentication.h"
#include "tests/support/ScriptedServer.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

class TokenRefusalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusals_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("challenge"); // the field WWW-Authenticate
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("isFinal");
        const QByteArray client = R"({"error":"invalid_client","error_description":"The OAuth client was deleted."})";
        const QByteArray grant = R"({"error":"invalid_grant"})";
        QTest::newRow("invalid_grant") << 400 << QByteArray() << grant << true;
        QTest::newRow("invalid_client") << 401 << QByteArray() << client << true;
        QTest::newRow("invalid_client, and a login") << 401 << QByteArray("Basic realm=\"token\"") << client << true;
        QTest::newRow("invalid_client, and a digest")
            << 401 << QByteArray("Digest realm=\"t\", nonce=\"n\"") << client << true;
        QTest::newRow("invalid_grant, and a login") << 401 << QByteArray("Basic realm=\"token\"") << grant << true;
        QTest::newRow("a portal's login") << 401 << QByteArray("Basic realm=\"Hotel\"") << QByteArray("Pay") << false;
    }
    void refusals() {
        QFETCH(int, status);
        QFETCH(QByteArray, challenge);
        QFETCH(QByteArray, body);
        QFETCH(bool, isFinal);
        ScriptedServer server;
        std::vector<HeaderFields::Field> fields{{"Content-Type", "application/json"}};
        if (!challenge.isEmpty())
            fields.push_back({"WWW-Authenticate", challenge});
        server.setHandler([=](const ReceivedRequest&) { return Answer::with(status, body, fields); });
        const auto authentication = GTMOAuth2Authentication::authenticationWithServiceProvider(
            u"Google"_s, server.url(u"/token"_s), {}, u"id"_s, u"secret"_s);
        authentication->setShouldAuthorizeAllRequests(true); // the server speaks plain http
        authentication->setRefreshToken(u"refresh"_s);
        std::optional<MaybeError> answer;
        authentication->authorizeRequest(URLRequest(server.url()), this,
                                         [&](const URLRequest&, const MaybeError& error) { answer = error; });
        QTRY_VERIFY_WITH_TIMEOUT(answer, 30'000);
        QVERIFY(*answer);
        QCOMPARE(authentication->lastRefreshFailure(), isFinal ? RefreshFailure::refused : RefreshFailure::momentary);
        QVERIFY2((*answer)->isHTTPStatus(status), qPrintable((*answer)->description()));
        QCOMPARE(server.requests().size(), 1U); // nothing is tried a second time
    }
};

QTEST_GUILESS_MAIN(TokenRefusalTest)
#include "tst_TokenRefusal.moc"
