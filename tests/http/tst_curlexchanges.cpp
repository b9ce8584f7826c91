// Several exchanges on the real connection: redirects, logins, proxies, reuse; and TLS.
#include "tests/http/CurlBench.h"
#include "tests/support/TestCertificate.h"

#include <QSslCertificate>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryFile>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

using Then = Answer::Then;

std::unique_ptr<QTcpServer> tlsServer() {
    auto server = std::make_unique<QSslServer>();
    QSslConfiguration configuration;
    configuration.setLocalCertificate(QSslCertificate(QByteArray(testCertificate)));
    configuration.setPrivateKey(QSslKey(QByteArray(testCertificateKey), QSsl::Ec));
    server->setSslConfiguration(configuration);
    return server;
}

// An environment variable for the time of a test.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const QByteArray& value)
        : name_(name) {
        qputenv(name, value);
    }
    ~ScopedVariable() { qunsetenv(name_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* name_;
};

} // namespace

class CurlExchangesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // --- Redirects and logins -------------------------------------------------------------------------------------

    void redirectRules_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("then");
        const auto row = [](int status, const char* method, const char* then) {
            QTest::addRow("%d after %s", status, method) << status << QByteArray(method) << QByteArray(then);
        };
        for (const int status : {301, 302}) {
            row(status, "GET", "GET");
            row(status, "POST", "GET");
            row(status, "PUT", "PUT");
        }
        row(303, "POST", "GET");
        row(303, "PUT", "GET");
        row(303, "HEAD", "HEAD");
        for (const int status : {307, 308}) {
            row(status, "GET", "GET");
            row(status, "POST", "POST");
        }
    }
    void redirectRules() {
        QFETCH(int, status);
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, then);
        const bool hasBody = method == "POST" || method == "PUT";
        ScriptedServer server;
        server.enqueue(Answer::with(status, method == "HEAD" ? "" : "moved", {{"Location", "../else?x=1"}}));
        server.enqueue(Answer::with(200));
        const ConnectionRecorder client =
            run(makeRequest(server.url(u"/a/b/c"_s), method, hasBody ? QByteArray("body") : QByteArray()));
        QVERIFY(!client.error);
        QCOMPARE(server.requests().size(), 2U);
        const ReceivedRequest& second = server.requests().back();
        QCOMPARE(second.method, then);
        QCOMPARE(second.target, "/a/else?x=1");
        QCOMPARE(second.body, hasBody && then == method ? QByteArray("body") : QByteArray());
        QCOMPARE(client.response.statusCode, 200);
        QCOMPARE(client.redirectResponses.size(), 1U);
        QVERIFY(client.data.isEmpty()); // the redirect's own body is nobody's
        QCOMPARE(server.connectionCount(), 1);
    }

    void plainAnswersThatLookLikeRedirects_data() {
        QTest::addColumn<QByteArray>("location");
        QTest::addColumn<bool>("follows");
        QTest::newRow("308 of a resumable upload") << QByteArray() << true;
        QTest::newRow("an address that is none") << QByteArray("http://[") << true;
        QTest::newRow("refused by the client") << QByteArray("/else") << false;
    }
    void plainAnswersThatLookLikeRedirects() {
        QFETCH(QByteArray, location);
        QFETCH(bool, follows);
        ScriptedServer server;
        std::vector<HeaderFields::Field> headers{{"Range", "bytes=0-41"}};
        if (!location.isEmpty())
            headers.emplace_back("Location", location);
        server.enqueue(Answer::with(308, "as it is", headers));
        ConnectionRecorder client;
        client.followsRedirects = follows;
        run(makeRequest(server.url(), "PUT", "body"), client);
        QVERIFY(!client.error);
        QCOMPARE(client.response.statusCode, 308);
        QCOMPARE(client.response.headers.value("Range"), "bytes=0-41");
        QCOMPARE(client.data, "as it is");
    }

    void redirectsEnd() {
        ScriptedServer server;
        server.setHandler([](const ReceivedRequest&) { return Answer::with(302, {}, {{"Location", "/again"}}); });
        const ConnectionRecorder client = run(makeRequest(server.url()));
        QVERIFY(client.error && client.error->is(URLErrorCode::httpTooManyRedirects));
        QCOMPARE(server.requests().size(), 21U); // the first and twenty more
    }

    void logins_data() {
        QTest::addColumn<QByteArray>("challenge");
        QTest::addColumn<int>("offered"); // credentials that the client has, the last of them right
        QTest::addColumn<bool>("welcome");
        QTest::newRow("basic") << QByteArray("Basic realm=\"here\"") << 1 << true;
        QTest::newRow("basic, at the second try") << QByteArray("Basic realm=\"here\"") << 2 << true;
        QTest::newRow("digest") << QByteArray("Digest realm=\"here\", nonce=\"abc\", qop=\"auth\"") << 1 << true;
        QTest::newRow("digest, at the second try")
            << QByteArray("Digest realm=\"here\", nonce=\"abc\", qop=\"auth\"") << 2 << true;
        QTest::newRow("nothing to offer") << QByteArray("Basic realm=\"here\"") << 0 << false;
    }
    void logins() {
        QFETCH(QByteArray, challenge);
        QFETCH(int, offered);
        QFETCH(bool, welcome);
        ScriptedServer server;
        server.setHandler([challenge](const ReceivedRequest& request) {
            const QByteArray given = request.header("Authorization");
            const bool isRight = given == "Basic " + QByteArray("right:secret").toBase64() ||
                                 (given.startsWith("Digest ") && given.contains("username=\"right\""));
            return isRight ? Answer::with(200, "welcome: " + request.body)
                           : Answer::with(401, "who are you?", {{"WWW-Authenticate", challenge}});
        });
        ConnectionRecorder client;
        for (int i = 1; i <= offered; ++i)
            client.credentials.push_back({i == offered ? u"right"_s : u"wrong"_s, u"secret"_s});
        run(makeRequest(server.url(), "POST", "hello"), client);
        QCOMPARE(!client.error, welcome);
        QCOMPARE(int(client.challenges.size()), welcome ? offered : offered + 1);
        for (size_t i = 0; i < client.challenges.size(); ++i)
            QCOMPARE(client.challenges[i].previousFailureCount, int(i));
        QCOMPARE(client.challenges.front().realm, u"here"_s);
        QCOMPARE(client.data, welcome ? QByteArray("welcome: hello") : QByteArray());
    }

    void aRedirectTakesNoLoginElsewhere() {
        ScriptedServer other;
        other.enqueue(Answer::with(200, "there"));
        ScriptedServer server;
        server.setHandler([&other](const ReceivedRequest& request) {
            if (request.header("Authorization").isEmpty())
                return Answer::with(401, {}, {{"WWW-Authenticate", "Basic realm=\"here\""}});
            return Answer::with(302, {}, {{"Location", other.url().toEncoded()}});
        });
        ConnectionRecorder client;
        client.credentials = {{u"user"_s, u"word"_s}};
        run(makeRequest(server.url()), client);
        QCOMPARE(client.data, "there");
        QCOMPARE(other.requests().front().header("Authorization"), QByteArray());
    }

    void bearerChallengesArePlainAnswers() {
        ScriptedServer server;
        server.enqueue(Answer::with(401, "token?", {{"WWW-Authenticate", "Bearer realm=\"x\", Basic realm=\"y\""}}));
        const ConnectionRecorder client = run(makeRequest(server.url()));
        QVERIFY(!client.error);
        QVERIFY(client.challenges.empty());
        QCOMPARE(client.response.statusCode, 401);
        QCOMPARE(client.data, "token?");
    }

    // --- TLS and proxies ------------------------------------------------------------------------------------------

    void certificates_data() {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("trusted");
        QTest::addColumn<int>("code"); // 0: all is well
        QTest::newRow("trusted") << u"localhost"_s << true << 0;
        QTest::newRow("unknown") << u"localhost"_s << false << int(URLErrorCode::serverCertificateUntrusted);
        QTest::newRow("another's name") << u"127.0.0.2"_s << true << int(URLErrorCode::serverCertificateUntrusted);
    }
    void certificates() {
        QFETCH(QString, host);
        QFETCH(bool, trusted);
        QFETCH(int, code);
        QTemporaryFile store;
        QVERIFY(store.open());
        store.write(testCertificate);
        store.close();
        std::optional<ScopedVariable> variable;
        if (trusted)
            variable.emplace("SSL_CERT_FILE", QFile::encodeName(store.fileName()));
        ScriptedServer server(tlsServer(), QHostAddress::AnyIPv4);
        server.setScheme(u"https"_s);
        server.setHandler([](const ReceivedRequest& request) { return Answer::with(200, request.body); });
        QUrl url = server.url();
        url.setHost(host);
        ConnectionRecorder client;
        const QByteArray large(3000000, 't');
        run(makeRequest(url, "PUT", large), client);
        QCOMPARE(client.error ? int(client.error->code()) : 0, code);
        QVERIFY(code != 0 || client.data == large);
        QCOMPARE(server.requests().size(), code == 0 ? 1U : 0U);
    }

    void noTlsAtAll() {
        ScriptedServer server;
        server.setScheme(u"https"_s);
        ConnectionRecorder client;
        const QUrl url = server.url();
        const auto connection = CurlConnection::create(makeRequest(url), client);
        connection->start();
        QTRY_COMPARE(server.openConnectionCount(), 1);
        server.closeAllConnections();
        QTRY_VERIFY(client.isDone);
        QVERIFY(client.error->is(URLErrorCode::secureConnectionFailed));
    }

    void proxiesFromTheEnvironment_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("http") << u"http://far.invalid/x"_s << QByteArray("GET") << QByteArray("http://far.invalid/x");
        QTest::newRow("https") << u"https://far.invalid/x"_s << QByteArray("CONNECT") << QByteArray("far.invalid:443");
    }
    void proxiesFromTheEnvironment() {
        QFETCH(QString, url);
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        ScriptedServer proxy;
        const QByteArray right = "Basic " + QByteArray("user:word").toBase64();
        proxy.setHandler([right](const ReceivedRequest& request) {
            if (request.header("Proxy-Authorization") != right)
                return Answer::with(407, "pay", {{"Proxy-Authenticate", "Basic realm=\"proxy\""}});
            return request.method == "CONNECT" ? Answer::with(502) : Answer::with(200, "from afar");
        });
        const ScopedVariable http("http_proxy", proxy.url().toEncoded());
        const ScopedVariable https("https_proxy", proxy.url().toEncoded());
        ConnectionRecorder client;
        client.credentials = {{u"user"_s, u"word"_s}};
        run(makeRequest(QUrl(url)), client);
        QVERIFY(proxy.requests().size() >= 2);
        QCOMPARE(proxy.requests().front().method, method);
        QCOMPARE(proxy.requests().front().target, target);
        QCOMPARE(proxy.requests().back().header("Proxy-Authorization"), right);
        QCOMPARE(client.challenges.size(), 1U);
        QVERIFY(client.challenges.front().isProxy);
        QCOMPARE(client.error.has_value(), method == "CONNECT");
        QCOMPARE(client.data, QByteArray(method == "GET" ? "from afar" : ""));
    }

    // --- Reuse ----------------------------------------------------------------------------------------------------

    // A connection that is kept open, answers once and dies on the second request.
    void deadReusedConnections_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<bool>("hasRead"); // whether the server took the request before it went away
        QTest::addColumn<int>("then");
        QTest::addColumn<bool>("succeeds");
        for (const Then then : {Then::close, Then::reset}) {
            const char* how = then == Then::close ? "closed" : "reset";
            const auto row = [then, how](const char* method, bool hasRead, bool succeeds) {
                QTest::addRow("%s, %s %s", method, how, hasRead ? "after reading" : "while idle")
                    << QByteArray(method) << hasRead << int(then) << succeeds;
            };
            for (const char* method : {"POST", "PUT", "PATCH", "DELETE"})
                row(method, true, false);
            row("GET", true, true);
            row("POST", false, true);
            row("GET", false, true);
        }
    }
    void deadReusedConnections() {
        QFETCH(QByteArray, method);
        QFETCH(bool, hasRead);
        QFETCH(int, then);
        QFETCH(bool, succeeds);
        ScriptedServer server;
        server.enqueue(Answer::with(200, "first"));
        if (hasRead)
            server.enqueue(Answer::nothing(Then(then)));
        server.enqueue(Answer::with(200, "fresh"));
        const ConnectionRecorder first = run(makeRequest(server.url()));
        QCOMPARE(first.data, "first");
        if (!hasRead)
            server.closeAllConnections();

        ConnectionRecorder second;
        const bool hasBody = method != "GET" && method != "DELETE";
        run(makeRequest(server.url(), method, hasBody ? QByteArray("change it") : QByteArray()), second);
        const auto copies = std::count_if(server.requests().begin() + 1, server.requests().end(),
                                          [&method](const auto& request) { return request.method == method; });
        if (succeeds) {
            QVERIFY(!second.error);
            QCOMPARE(second.data, "fresh");
            QCOMPARE(copies, hasRead ? 2 : 1);
        } else {
            QVERIFY(second.error && second.error->is(URLErrorCode::networkConnectionLost));
            QCOMPARE(copies, 1);
        }
    }

    // The kept connection dies under a request, and the new one that libcurl then tries is refused.
    void serversThatGoAwayAltogether() {
        for (const Then then : {Then::close, Then::reset}) {
            auto made = std::make_unique<QTcpServer>();
            QTcpServer& listener = *made;
            ScriptedServer server(std::move(made));
            server.enqueue(Answer::with(200, "first"));
            server.setHandler([&listener, then](const ReceivedRequest&) {
                listener.close();
                return Answer::nothing(then);
            });
            const QUrl url = server.url();
            const ConnectionRecorder first = run(makeRequest(url));
            const ConnectionRecorder second = run(makeRequest(url, "PUT", "change it"));
            QVERIFY(second.error);
            QVERIFY2(second.error->is(URLErrorCode::networkConnectionLost), qPrintable(second.error->description()));
            const ConnectionRecorder third = run(makeRequest(url));
            QVERIFY(third.error && third.error->is(URLErrorCode::cannotConnectToHost));
        }
    }

    void aThousandRequestsOnOneConnection() {
        ScriptedServer server;
        server.setHandler([](const ReceivedRequest& request) { return Answer::with(200, request.body); });
        for (int i = 0; i < 1000; ++i) {
            const ConnectionRecorder client = run(makeRequest(server.url(), "POST", QByteArray::number(i)));
            QCOMPARE(client.data, QByteArray::number(i));
        }
        QCOMPARE(server.connectionCount(), 1);
    }
};

QTEST_GUILESS_MAIN(CurlExchangesTest)
#include "tst_curlexchanges.moc"
