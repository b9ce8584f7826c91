// The transport's small value types, each by a table.
#include "http/Challenge.h"
#include "http/HTTPDate.h"
#include "http/HeaderFields.h"
#include "http/ResponseHead.h"
#include "http/RetryPolicy.h"
#include "http/StatusText.h"
#include "http/UserAgent.h"

#include <QTemporaryFile>
#include <QTest>

using namespace quenby;
using namespace Qt::StringLiterals;

class HTTPValuesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void headerFields() {
        HeaderFields fields;
        fields.append("Set-Cookie", "a=1");
        fields.append("X-One", "1");
        fields.append("set-cookie", "b=2");
        QCOMPARE(fields.values("SET-COOKIE"), (QList<QByteArray>{"a=1", "b=2"}));
        QCOMPARE(fields.value("Set-Cookie"), "a=1, b=2");
        fields.set("SET-COOKIE", "c=3");
        QCOMPARE(fields.size(), 2);
        QCOMPARE(fields.begin()->second, "c=3"); // in the first one's place
        fields.remove("x-one");
        QVERIFY(!fields.contains("X-One"));
        QVERIFY(fields.value("X-One").isNull());
        fields.set("X-Evil", QByteArray("a\r\nInjected: 1\0b", 16));
        QCOMPARE(fields.value("X-Evil"), "aInjected: 1b");
    }

    void dates_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("date"); // empty: none
        const QString example = u"1994-11-06T08:49:37Z"_s;
        QTest::newRow("IMF-fixdate") << QByteArray("Sun, 06 Nov 1994 08:49:37 GMT") << example;
        QTest::newRow("RFC 850") << QByteArray("Sunday, 06-Nov-94 08:49:37 GMT") << example;
        QTest::newRow("asctime") << QByteArray("Sun Nov  6 08:49:37 1994") << example;
        QTest::newRow("century 20") << QByteArray("1 Jan 69 1:2:3") << u"2069-01-01T01:02:03Z"_s;
        QTest::newRow("no time") << QByteArray("Sun, 06 Nov 1994") << QString();
        QTest::newRow("no such time") << QByteArray("Sun, 06 Nov 1994 24:00:00 GMT") << QString();
        QTest::newRow("year too small") << QByteArray("Sun, 06 Nov 1600 08:49:37 GMT") << QString();
        QTest::newRow("five digits") << QByteArray("Sun, 06 Nov 19940 08:49:37 GMT") << QString();
        QTest::newRow("words") << QByteArray("never") << QString();
        QTest::newRow("nothing") << QByteArray() << QString();
    }
    void dates() {
        QFETCH(QByteArray, text);
        QFETCH(QString, date);
        QCOMPARE(parseHTTPDate(text), QDateTime::fromString(date, Qt::ISODate));
    }

    void randomMinimum() {
        bool varies = false;
        double last = 0;
        for (int i = 0; i < 100; ++i) {
            RetryPolicy policy;
            policy.setEnabled(true);
            QVERIFY(policy.minRetryInterval() >= 1 && policy.minRetryInterval() <= 2);
            varies |= last > 0 && policy.minRetryInterval() != last;
            last = policy.minRetryInterval();
            policy.setMinRetryInterval(0.25);
            QCOMPARE(policy.nextRetryInterval(), 0.25);
        }
        QVERIFY(varies);
    }

    void enablingStartsAnew() {
        RetryPolicy policy;
        policy.setEnabled(true);
        policy.setMaxRetryInterval(15);
        policy.takeDelay(std::nullopt);
        policy.setEnabled(true); // it was on: nothing changes
        QCOMPARE(policy.maxRetryInterval(), 15.0);
        policy.setEnabled(false);
        policy.setEnabled(true);
        QCOMPARE(policy.maxRetryInterval(), RetryPolicy::unsetInterval);
        QCOMPARE(policy.lastRetryInterval(), 0.0);
        QCOMPARE(policy.retryFactor(), 2.0);
    }

    void challenges_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("found");
        QTest::newRow("basic") << 401 << QByteArray("Basic realm=\"a b\"") << u"basic a b"_s;
        QTest::newRow("case") << 401 << QByteArray("bAsIc REALM=x") << u"basic x"_s;
        QTest::newRow("the better one") << 401 << QByteArray("Basic realm=\"x\", Digest realm=\"x\", nonce=\"n\"")
                                        << u"digest x"_s;
        QTest::newRow("bearer too") << 401 << QByteArray("Basic realm=\"x\", Bearer") << QString();
        QTest::newRow("a parameter named so") << 401 << QByteArray("Custom basic=\"x\"") << QString();
        QTest::newRow("other status") << 403 << QByteArray("Basic realm=\"x\"") << QString();
        QTest::newRow("none") << 401 << QByteArray() << QString();
        QTest::newRow("not the proxy's field") << 407 << QByteArray("Basic realm=\"x\"") << QString();
    }
    void challenges() {
        QFETCH(int, status);
        QFETCH(QByteArray, field);
        HTTPResponse response;
        response.statusCode = status;
        response.headers.set("WWW-Authenticate", field);
        const auto challenge = passwordChallenge(response);
        QString seen;
        if (challenge) {
            seen = u"%1 %2"_s.arg(challenge->scheme == ChallengeScheme::basic ? u"basic"_s : u"digest"_s,
                                  challenge->challenge.realm);
        }
        QTEST(seen, "found");
    }

    void mediaTypes_data() {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QByteArray>("type");
        QTest::newRow("parameters") << QByteArray("Application/JSON ; charset=utf-8") << QByteArray("application/json");
        QTest::newRow("plain") << QByteArray("text/html") << QByteArray("text/html");
        QTest::newRow("none") << QByteArray() << QByteArray();
    }
    void mediaTypes() {
        QFETCH(QByteArray, field);
        HTTPResponse response;
        if (!field.isEmpty())
            response.headers.set("content-type", field);
        QTEST(response.mimeType(), "type");
    }

    void malformedHeads_data() {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("fields");
        QTest::newRow("no code") << QByteArray("HTTP/1.1\r\n\r\n") << 0 << 0;
        QTest::newRow("half a code") << QByteArray("HTTP/1.1 2\r\n\r\n") << 2 << 0;
        QTest::newRow("letters") << QByteArray("HTTP/1.1 abc\r\n\r\n") << 0 << 0;
        QTest::newRow("no colon") << QByteArray("HTTP/2 200\r\nabc\r\n: x\r\na: b\r\n\r\n") << 200 << 1;
        QTest::newRow("folded at once") << QByteArray("HTTP/1.1 200 OK\r\n folded\r\na: b\r\n\tc\r\n\r\n") << 200 << 1;
    }
    void malformedHeads() {
        QFETCH(QByteArray, head);
        ResponseHead parser;
        bool complete = false;
        while (!head.isEmpty()) {
            const qsizetype end = head.indexOf('\n') + 1;
            complete = parser.addLine(QByteArrayView(head).first(end)) == ResponseHead::Progress::complete;
            head.remove(0, end);
        }
        QVERIFY(complete);
        QTEST(parser.statusCode(), "status");
        QTEST(int(parser.headers().size()), "fields");
    }

    void userAgents_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cleaned");
        QTest::newRow("words") << u"My App, Pro"_s << u"My_App__Pro"_s;
        QTest::newRow("separators") << u"a(b)<c>@d;e:f\\g/h[i]j?k={l}\"m"_s << u"abcdefghijklm"_s;
        QTest::newRow("white space") << u"a\tb\nc\u00a0d\u2028e"_s << u"abcde"_s;
    }
    void userAgents() {
        QFETCH(QString, text);
        QTEST(userAgent::cleaned(text), "cleaned");
    }

    void applicationIdentifiers() {
        userAgent::Application application;
        application.processName = u"pro cess"_s;
        QCOMPARE(userAgent::applicationIdentifier(application), u"proc_pro_cess"_s);
        application.identifier = u"org.example.App"_s;
        application.version = u"1.0 (7)"_s;
        QCOMPARE(userAgent::applicationIdentifier(application), u"org.example.App/1.0_7"_s);
        application.userAgentID = u"App"_s;
        application.shortVersion = u"1.0"_s;
        QCOMPARE(userAgent::applicationIdentifier(application), u"App/1.0"_s);
    }

    void systemVersions() {
        QCOMPARE(userAgent::systemVersionString(u"/no/such/file"_s), u"MacOSX/10.?.?"_s);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("<dict>\n<key>ProductVersion</key>\n\t<string>10.15.7</string>\n</dict>\n");
        file.close();
        QCOMPARE(userAgent::systemVersionString(file.fileName()), u"MacOSX/10.15.7"_s);
    }

    void statusTexts() {
        QCOMPARE(statusText(404), u"404 Not Found"_s);
        QCOMPARE(statusText(599), u"599"_s);
    }
};

QTEST_GUILESS_MAIN(HTTPValuesTest)
#include "tst_httpvalues.moc"
