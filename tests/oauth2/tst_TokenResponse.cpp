#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/TokenResponse.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace quenby::oauth2;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(std::optional<qint64>)

class TestTokenResponse : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void responseIsParsed_data() {
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("accessToken"); // empty: an error
        const QByteArray json = "application/json";
        const QByteArray form = "application/x-www-form-urlencoded";
        QTest::newRow("JSON") << json << QByteArray(R"({"access_token":"ya29.a-b_c","expires_in":3600})")
                              << u"ya29.a-b_c"_s;
        QTest::newRow("JSON with a charset")
            << QByteArray("Application/JSON; charset=utf-8") << QByteArray(R"({"access_token":"t"})") << u"t"_s;
        QTest::newRow("form") << form << QByteArray("access_token=a%2Fb&expires_in=3600") << u"a/b"_s;
        QTest::newRow("form without content type") << QByteArray() << QByteArray("access_token=t") << u"t"_s;
        QTest::newRow("number for a token") << json << QByteArray(R"({"access_token":12345})") << QString();
        QTest::newRow("object for a token") << json << QByteArray(R"({"access_token":{"a":"b"}})") << QString();
        QTest::newRow("null for a token") << json << QByteArray(R"({"access_token":null})") << QString();
        QTest::newRow("empty token") << json << QByteArray(R"({"access_token":""})") << QString();
        QTest::newRow("line break in a token") << json << QByteArray("{\"access_token\":\"a\\r\\nX: y\"}") << QString();
        QTest::newRow("token beyond ASCII") << json << QByteArray("{\"access_token\":\"t\\u00e4\"}") << QString();
        QTest::newRow("no token") << json << QByteArray(R"({"token_type":"Bearer"})") << QString();
        QTest::newRow("cut off") << json << QByteArray("{\"access_token\":\"t\",\"expi") << QString();
        QTest::newRow("array") << json << QByteArray(R"(["access_token","t"])") << QString();
        QTest::newRow("empty JSON") << json << QByteArray() << QString();
        QTest::newRow("empty form") << form << QByteArray() << QString();
        QTest::newRow("HTML") << QByteArray("text/html") << QByteArray("<a href='?x=1&access=2'>Log in</a>")
                              << QString();
        QTest::newRow("error with status 200") << json << QByteArray(R"({"error":"invalid_grant"})") << QString();
    }
    void responseIsParsed() {
        QFETCH(QByteArray, contentType);
        QFETCH(QByteArray, body);
        QFETCH(QString, accessToken);
        const auto response = parseTokenResponse(contentType, body);
        QCOMPARE(response.ok(), !accessToken.isEmpty());
        if (response)
            QCOMPARE(response->value(u"access_token"_s), QVariant(accessToken));
        else
            QVERIFY(response.error().is(errorDomain::oauth2, -1001));
    }

    void lifetimeIsRead_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<std::optional<qint64>>("seconds");
        constexpr qint64 tenYears = std::chrono::seconds(std::chrono::years(10)).count();
        QTest::newRow("number") << QByteArray("3600") << std::optional<qint64>(3600);
        QTest::newRow("text") << QByteArray("\"3599\"") << std::optional<qint64>(3599);
        QTest::newRow("fraction") << QByteArray("10.9") << std::optional<qint64>(10);
        QTest::newRow("huge") << QByteArray("1e300") << std::optional<qint64>(tenYears);
        QTest::newRow("huge whole number") << QByteArray("9223372036854775807") << std::optional<qint64>(tenYears);
        for (const char* nothing : {"0", "-5", "\"soon\"", "true", "null", "[60]", "\"\""})
            QTest::newRow(nothing) << QByteArray(nothing) << std::optional<qint64>();
    }
    void lifetimeIsRead() {
        QFETCH(QByteArray, json);
        QFETCH(std::optional<qint64>, seconds);
        const auto time = std::make_shared<testing::ManualTimeSource>();
        const auto auth = GTMOAuth2Authentication::authenticationWithServiceProvider({}, {}, {}, {}, {}, time);
        auth->setKeysForResponseDictionary({{u"access_token"_s, u"old"_s}, {u"expires_in"_s, 77}});
        auth->setKeysForResponseJSONData("{\"access_token\":\"t\",\"expires_in\":" + json + '}');
        QCOMPARE(auth->accessToken(), u"t"_s);
        QCOMPARE(auth->expirationDate(), seconds ? std::optional(time->now().addSecs(*seconds)) : std::nullopt);
    }

    void wrongTypesAreNotTakenOver() {
        const auto auth = GTMOAuth2Authentication::authenticationWithServiceProvider(u"Google"_s, {}, {}, {}, {});
        auth->setKeysForResponseString(u"access_token=a&refresh_token=r&email=me%40x.y&expires_in=500"_s);
        auth->setKeysForResponseJSONData(
            R"({"access_token":[1],"refresh_token":"","email":null,"scope":5,"serviceProvider":{},"extra":{"k":[1]}})");
        QCOMPARE(auth->accessToken(), u"a"_s);
        QCOMPARE(auth->refreshToken(), u"r"_s);
        QCOMPARE(auth->userEmail(), u"me@x.y"_s);
        QCOMPARE(auth->scope(), QString());
        QCOMPARE(auth->serviceProvider(), u"Google"_s);
        QCOMPARE(auth->parameters().value(u"extra"_s), QVariant(QVariantMap{{u"k"_s, QVariantList{1}}}));
    }

    void failuresAreToldApart_data() {
        QTest::addColumn<Error>("plain");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("isRefused");
        const auto status = [](int code) { return Error(errorDomain::httpStatus, code); };
        const QByteArray grant = R"({"error":"invalid_grant","error_description":"Token 1//secret-token expired"})";
        QTest::newRow("invalid_grant") << status(400) << grant << true;
        QTest::newRow("invalid_client") << status(401) << QByteArray(R"({"error":"invalid_client"})") << true;
        QTest::newRow("error of another kind") << status(400) << QByteArray(R"({"error":"slow_down"})") << false;
        QTest::newRow("secret for an error name")
            << status(400) << QByteArray("{\"error\":\"1//secret-token\"}") << false;
        QTest::newRow("error object") << status(400) << QByteArray(R"({"error":{"code":400}})") << false;
        QTest::newRow("a portal's page") << status(403) << QByteArray("<html>Pay here</html>") << false;
        QTest::newRow("server error that claims a refusal") << status(503) << grant << false;
        QTest::newRow("network") << Error(URLErrorCode::cannotFindHost) << QByteArray() << false;
    }
    void failuresAreToldApart() {
        QFETCH(Error, plain);
        QFETCH(QByteArray, body);
        QFETCH(bool, isRefused);
        for (const bool isSigningIn : {false, true}) {
            const Error error = explainedTokenError(withServerJSON(plain, body), u"Google"_s, isSigningIn);
            QVERIFY(error.is(plain.domain(), plain.code()));
            QCOMPARE(refreshFailureOf(error), isRefused ? RefreshFailure::refused : RefreshFailure::momentary);
            QVERIFY2(!error.description().contains(u"secret"_s), qPrintable(error.description()));
            const bool asksForSignIn = error.description().contains(u"ign in again"_s);
            QCOMPARE(asksForSignIn, isRefused || isSigningIn);
            QCOMPARE(error.description().contains(u"sign-in stays"_s), !isRefused && !isSigningIn);
        }
    }
};

QTEST_GUILESS_MAIN(TestTokenResponse)
#include "tst_TokenResponse.moc"
