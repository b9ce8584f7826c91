// What people are told to do: by the provider's names, wherever an error keeps them, and never with a secret in it.
#include "app/session/SignInAdvice.h"
#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLJSONParser.h"
#include "oauth2/OAuth2Error.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

QVariantMap parsed(const QByteArray& json) { return QJsonDocument::fromJson(json).object().toVariantMap(); }

// As the consent page, the token server and the two roads to the Drive give them.
Error ofPage(const QString& name) {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed, u"The provider answered without a code."_s,
                             {{errorKey::error, name}});
}
Error ofTokenServer(const QByteArray& json, int status = 400) {
    return Error(errorDomain::httpStatus, status, {{errorKey::json, parsed(json)}, {errorKey::reason, u"So."_s}});
}
Error ofDrive(const QByteArray& json) {
    return Error(errorDomain::httpStatus, 403, {{errorKey::data, json}, {errorKey::reason, u"So."_s}});
}
Error ofRPC(const QByteArray& error) {
    GTLErrorObject object;
    object.setJSON(GTLJSONParser::objectWithData(error)->dictionary());
    return object.foundationError();
}

const QByteArray disabled =
    R"({"error":{"code":403,"message":"Enable it at https://console.example/api?project=4711",)"
    R"("errors":[{"domain":"usageLimits","reason":"forbidden"}],"status":"PERMISSION_DENIED",)"
    R"("details":[{"@type":"type.googleapis.com/google.rpc.ErrorInfo","reason":"SERVICE_DISABLED"}]}})";

} // namespace

class SignInAdviceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void namesAreFoundWhereverTheyStand_data() {
        QTest::addColumn<Error>("error");
        QTest::addColumn<QString>("told");
        QTest::addColumn<bool>("needsUser");
        QTest::newRow("declined") << ofPage(u"access_denied"_s) << u"test user"_s << true;
        QTest::newRow("organisation") << ofPage(u"org_internal"_s) << u"organisation"_s << true;
        QTest::newRow("renewal") << ofTokenServer(R"({"error":"invalid_grant","error_description":"Bad Request"})")
                                 << u"Sign in again"_s << true;
        QTest::newRow("another kind") << ofTokenServer(R"({"error":"redirect_uri_mismatch"})") << u"Desktop app"_s
                                      << true;
        QTest::newRow("the API is off") << ofDrive(disabled) << u"enable the Google Drive API"_s << true;
        QTest::newRow("a box") << ofRPC(R"({"code":403,"message":"No.","data":[{"reason":"insufficientPermissions"}]})")
                               << u"tick it"_s << true;
        QTest::newRow("too fast") << ofDrive(R"({"error":{"errors":[{"reason":"userRateLimitExceeded"}]}})")
                                  << u"slower"_s << false;
        QTest::newRow("out of order") << Error(errorDomain::httpStatus, 503) << u"in difficulty"_s << false;
        QTest::newRow("no answer") << Error(URLErrorCode::timedOut) << u"in time"_s << false;
        QTest::newRow("no network") << Error(URLErrorCode::cannotFindHost) << u"network connection"_s << false;
        QTest::newRow("no browser") << Error(errorDomain::posix, ENOENT) << u"default browser"_s << false;
        QTest::newRow("told already") << Error(errorDomain::posix, EADDRINUSE, {{errorKey::reason, u"Close some."_s}})
                                      << u"Close some."_s << false;
    }
    void namesAreFoundWhereverTheyStand() {
        QFETCH(Error, error);
        QFETCH(QString, told);
        const SignInAdvice advice = signInAdvice(error);
        QVERIFY2(advice.sentence.contains(told), qPrintable(advice.sentence));
        QTEST(advice.needsUser, "needsUser");
    }

    void everyNameHasItsSentence() {
        const QStringList names = u"access_denied invalid_client deleted_client invalid_grant redirect_uri_mismatch "
                                  "invalid_scope org_internal admin_policy_enforced disallowed_useragent "
                                  "invalid_request temporarily_unavailable accessNotConfigured insufficientPermissions "
                                  "domainPolicy dailyLimitExceeded userRateLimitExceeded accountDisabled"_s.split(u' ');
        QSet<QString> sentences;
        for (const QString& name : names) {
            const auto advice = signInAdvice(name);
            QVERIFY2(advice, qPrintable(name));
            sentences.insert(advice->sentence);
        }
        QCOMPARE(sentences.size(), names.size());
        for (const char* name : {"", " ", "client", "invalid"})
            QVERIFY2(!signInAdvice(QString::fromLatin1(name)), name);
    }

    // A server's own words are quoted, but nothing in them that could open an account.
    void unknownWordsAreQuotedWithoutSecrets() {
        const QString words = u"Odd. See https://help.example/a?code=hush%2F1 or ya29.hushhushhushhushhushhushhushhush "
                              "refresh_token=hush state=hush\u202e\n\u0007 <b>now</b>"_s;
        const SignInAdvice advice = signInAdvice(
            Error(errorDomain::httpStatus, 400,
                  {{errorKey::json, QVariantMap{{u"error"_s, u"odd_thing"_s}, {u"error_description"_s, words}}}}));
        QVERIFY2(advice.sentence.contains("Odd. See help.example or"_L1), qPrintable(advice.sentence));
        QVERIFY(advice.sentence.contains("<b>now</b>"_L1)); // plain text where it is shown
        QVERIFY(!advice.sentence.contains("hush"_L1) && !advice.needsUser);
        QVERIFY(!advice.sentence.contains(QChar(0x202e)) && !advice.sentence.contains(u'\n'));
        QVERIFY(signInAdvice(ofTokenServer("{\"error\":\"" + QByteArray(9000, 'x') + "\"}")).sentence.size() < 500);
        QVERIFY(signInAdvice(ofPage(u"odd_thing"_s)).sentence.contains("odd_thing"_L1));
        QVERIFY(signInAdvice(Error(errorDomain::json, 7)).sentence.contains("7"_L1));
    }
};

QTEST_GUILESS_MAIN(SignInAdviceTest)
#include "tst_signinadvice.moc"
