// Which failures an upload survives, and for how long it goes on.

#include "app/account/SignInForm.h"
#include "app/uploads/transfer/Patience.h"
#include "app/uploads/transfer/UploadRefusal.h"
#include "app/uploads/transfer/UploadTrouble.h"
#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLService.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace std::chrono_literals;

class UploadTroubleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void kinds_data() {
        QTest::addColumn<Error>("error");
        QTest::addColumn<bool>("hasLocation");
        QTest::addColumn<int>("kind");
        const auto row = [](const char* name, const Error& error, bool hasLocation, UploadTrouble kind) {
            QTest::newRow(name) << error << hasLocation << static_cast<int>(kind);
        };
        const auto status = [](int code) { return Error(errorDomain::httpStatus, code); };
        for (const int code : {408, 429, 500, 502, 503, 504})
            row(QByteArray::number(code).constData(), status(code), true, UploadTrouble::passing);
        row("refused connection", URLErrorCode::cannotConnectToHost, false, UploadTrouble::passing);
        row("lost connection", URLErrorCode::networkConnectionLost, true, UploadTrouble::passing);
        row("lost connection of a piece", status(-1005), true, UploadTrouble::passing);
        row("piece could not begin", FetcherErrorCode::chunkUploadFailed, true, UploadTrouble::passing);
        row("session unknown", status(404), true, UploadTrouble::lostSession);
        row("session gone", status(410), true, UploadTrouble::lostSession);
        row("no such folder", status(404), false, UploadTrouble::final);
        row("full Drive", status(403), true, UploadTrouble::final);
        row("not implemented", status(501), true, UploadTrouble::final);
        row("unreadable file", URLErrorCode::requestBodyUnreadable, true, UploadTrouble::final);
        row("untrusted server", URLErrorCode::serverCertificateUntrusted, true, UploadTrouble::final);
        row("server's own code behind 503", Error(errorDomain::jsonRPC, -32603, {{gtlHTTPStatusKey, 503}}), true,
            UploadTrouble::passing);
        row("server's own code behind 410", Error(errorDomain::jsonRPC, -1, {{gtlHTTPStatusKey, 410}}), true,
            UploadTrouble::lostSession);
        const auto refused = [](int code, const char* list, const char* reason) {
            return Error(errorDomain::httpStatus, code,
                         {{errorKey::data, QByteArray("{\"error\": {\"" + QByteArray(list) + "\": [{\"reason\": \"" +
                                                      reason + "\"}]}}")}});
        };
        row("too fast, a piece of an upload", refused(403, "data", "rateLimitExceeded"), true, UploadTrouble::passing);
        row("too fast, a resource", refused(403, "errors", "userRateLimitExceeded"), false, UploadTrouble::passing);
        row("too much for today", refused(403, "errors", "dailyLimitExceeded"), false, UploadTrouble::final);
        row("too fast in sharing", refused(403, "errors", "sharingRateLimitExceeded"), false, UploadTrouble::final);
        row("too fast, in a status that is none", refused(400, "data", "rateLimitExceeded"), false,
            UploadTrouble::final);
        row("a call's own 503", Error(errorDomain::jsonRPC, 503), false, UploadTrouble::passing);
        row("a number of another domain", Error(errorDomain::posix, 503), true, UploadTrouble::final);
    }
    void kinds() {
        QFETCH(Error, error);
        QFETCH(bool, hasLocation);
        QTEST(static_cast<int>(troubleOf(error, hasLocation)), "kind");
    }

    // Whichever way the Drive's words came, people are told what to do.
    void refusals() {
        const auto object = GTLErrorObject::object();
        object->setCode(403);
        const auto detail = GTLErrorObjectData::object();
        detail->setReason(QStringLiteral("storageQuotaExceeded"));
        object->setData(GTLArray<GTLErrorObjectData>::make({detail}));
        const Error full = object->foundationError();
        QVERIFY(refusalSentence(full).startsWith(QStringLiteral("The Drive is full: ")));
        const QByteArray body =
            R"({"error": {"errors": [{"reason": "new"}, {"reason": "insufficientFilePermissions"}]}})";
        QVERIFY(refusalSentence(Error(errorDomain::httpStatus, 403, {{errorKey::data, body}}))
                    .contains(QStringLiteral("ask its owner")));
        for (const QByteArray& other :
             {QByteArray(), QByteArray("<html>"), QByteArray("[]"), QByteArray(R"({"error": "x"})")})
            QCOMPARE(refusalSentence(Error(errorDomain::httpStatus, 403, {{errorKey::data, other}})), QString());
    }

    void patienceEndsWithoutGain() {
        const auto time = std::make_shared<testing::ManualTimeSource>();
        Patience patience(time, 600s);
        QVERIFY(patience.failed(100));
        time->advance(599s);
        QVERIFY(patience.failed(100));
        time->advance(1s);
        QVERIFY(!patience.failed(100));
        QVERIFY(!patience.failed(50)); // less than before is no gain
    }

    void everyGainRenewsPatience() {
        const auto time = std::make_shared<testing::ManualTimeSource>();
        Patience patience(time, 600s);
        QVERIFY(patience.failed(0));
        time->advance(30min); // sent without trouble all the while
        QVERIFY(patience.failed(1));
        time->advance(599s);
        QVERIFY(patience.failed(1));
    }

    void delaysGrowAndStartAgain() {
        const auto time = std::make_shared<testing::ManualTimeSource>();
        Patience patience(time, 600s);
        QVERIFY(patience.failed(0));
        for (const auto expected : {1000ms, 2000ms, 4000ms, 8000ms, 16000ms, 30000ms, 30000ms}) {
            const auto delay = patience.nextDelay();
            QVERIFY2(delay >= expected * 3 / 4 && delay <= expected * 5 / 4, QByteArray::number(delay.count()));
        }
        QVERIFY(patience.failed(5));
        QVERIFY(patience.nextDelay() <= 1250ms);
    }

    // The page that a person would see, in the shapes in which such a page may be written.
    void signInForms() {
        const QUrl page(QStringLiteral("http://127.0.0.1:4711/o/oauth2/auth?x=1"));
        const QByteArray html =
            "<html><head><title>\n Sign in &amp; go </title></head><body>"
            "<form method=get action=/search><input name=q></form>"
            "<FORM METHOD='POST' action='approve?y=1'><input type=hidden name=\"a\" value='1 &amp;amp; 2'>"
            "<input name=email value=\"x@y\"><input type=checkbox name=stay value=1>"
            "<button name=\"decision\" value=\"cancel\">Cancel</button>"
            "<button name=\"decision\" value=\"allow\">Allow</button></FORM></body>";
        QCOMPARE(titleOfPage(html), QStringLiteral("Sign in & go"));
        const auto form = SignInForm::inPage(html, page);
        QVERIFY(form);
        QCOMPARE(form->action, QUrl(QStringLiteral("http://127.0.0.1:4711/o/oauth2/approve?y=1")));
        QCOMPARE(form->encoded(), QByteArray("a=1%20%26amp%3B%202&email=x%40y&decision=allow"));
        QVERIFY(!SignInForm::inPage("<form method=post><button name=a value=cancel></form>", page));
        QVERIFY(titleOfPage("<p>none</p>").isEmpty());
    }
};

QTEST_GUILESS_MAIN(UploadTroubleTest)
#include "tst_uploadtrouble.moc"
