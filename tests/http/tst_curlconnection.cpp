// One exchange on the real connection: what goes out, what comes back, what goes wrong, and ending it early.
#include "tests/http/BrokenDevice.h"
#include "tests/http/CurlBench.h"

#include <QBuffer>
#include <QThread>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

using Then = Answer::Then;

class SequentialDevice final : public QIODevice {
public:
    explicit SequentialDevice(const QByteArray& bytes)
        : bytes_(bytes) {
        open(ReadOnly | Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        const qint64 count = std::min(maxSize, bytes_.size());
        std::memcpy(data, bytes_.constData(), size_t(count));
        bytes_.remove(0, count);
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray bytes_;
};

// As Content-Encoding "deflate" has it: what the toolkit makes, without its own length in front.
QByteArray deflated(const QByteArray& plain) { return qCompress(plain).sliced(4); }

} // namespace

class CurlConnectionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sendsWhatWasAsked_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("contentLength"); // empty: no such field
        QTest::newRow("GET") << QByteArray("GET") << QByteArray() << QByteArray();
        QTest::newRow("HEAD") << QByteArray("HEAD") << QByteArray() << QByteArray();
        QTest::newRow("DELETE") << QByteArray("DELETE") << QByteArray() << QByteArray();
        QTest::newRow("POST") << QByteArray("POST") << QByteArray("a=b") << QByteArray("3");
        QTest::newRow("PUT without a byte") << QByteArray("PUT") << QByteArray("") << QByteArray("0");
        QTest::newRow("POST without a body") << QByteArray("POST") << QByteArray() << QByteArray("0");
        QTest::newRow("PATCH, large") << QByteArray("PATCH") << QByteArray(3000000, 'p') << QByteArray("3000000");
    }
    void sendsWhatWasAsked() {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, body);
        ScriptedServer server;
        server.enqueue(method == "HEAD" ? Answer::raw("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n")
                                        : Answer::with(200, "fine", {{"X-Twice", "1"}, {"x-twice", "2"}}));
        URLRequest request = makeRequest(server.url(u"/a/../b%20c?q=%2F#fragment"_s), method, body);
        request.headers.set("X-Own", "value");
        request.headers.set("X-Empty", "");
        request.headers.set("Content-Length", "77"); // not the caller's business
        const ConnectionRecorder client = run(request);

        QVERIFY2(!client.error, client.error ? qPrintable(client.error->description()) : "");
        QCOMPARE(server.requests().size(), 1U);
        const ReceivedRequest& seen = server.requests().front();
        QCOMPARE(seen.method, method);
        QCOMPARE(seen.target, "/a/../b%20c?q=%2F");
        QVERIFY(seen.body == body);
        QTEST(seen.header("Content-Length"), "contentLength");
        QCOMPARE(seen.header("X-Own"), "value");
        QVERIFY(seen.headers.contains("X-Empty"));
        QVERIFY(!seen.headers.contains("Expect"));
        QVERIFY(!seen.headers.contains("Content-Type")); // libcurl's form default must not appear
        QCOMPARE(client.response.statusCode, 200);
        QCOMPARE(client.sentBytes, body.size());
        if (method == "HEAD")
            return;
        QCOMPARE(client.data, "fine");
        QCOMPARE(client.response.headers.values("X-Twice"), (QList<QByteArray>{"1", "2"}));
        QStringList expected{u"response"_s, u"data"_s, u"finish"_s};
        if (!body.isEmpty())
            expected.prepend(u"sent"_s);
        QCOMPARE(client.events, expected);
    }

    void bodiesFromDevices_data() {
        QTest::addColumn<bool>("sequential");
        QTest::addColumn<qint64>("announced");
        QTest::addColumn<QByteArray>("arrives");
        QTest::addColumn<bool>("chunked");
        QTest::newRow("from its position to its end") << false << qint64(-1) << QByteArray("3456789") << false;
        QTest::newRow("so many bytes of it") << false << qint64(4) << QByteArray("3456") << false;
        QTest::newRow("a stream of known length") << true << qint64(7) << QByteArray("3456789") << false;
        QTest::newRow("a stream of unknown length") << true << qint64(-1) << QByteArray("3456789") << true;
    }
    void bodiesFromDevices() {
        QFETCH(bool, sequential);
        QFETCH(qint64, announced);
        QFETCH(QByteArray, arrives);
        QFETCH(bool, chunked);
        ScriptedServer server;
        server.enqueue(Answer::with(200));
        URLRequest request = makeRequest(server.url(), "PUT");
        if (sequential) {
            request.bodyStream = std::make_shared<SequentialDevice>("3456789");
        } else {
            auto buffer = std::make_shared<QBuffer>();
            buffer->setData("0123456789");
            buffer->open(QIODevice::ReadOnly);
            buffer->seek(3);
            request.bodyStream = buffer;
        }
        request.bodyLength = announced;
        const ConnectionRecorder client = run(request);
        QVERIFY(!client.error);
        QCOMPARE(server.requests().front().body, arrives);
        QCOMPARE(server.requests().front().header("Transfer-Encoding"), QByteArray(chunked ? "chunked" : ""));
        QCOMPARE(client.totalSent, arrives.size());
        QCOMPARE(client.totalExpected, chunked ? -1 : arrives.size());
    }

    // A source that ends early or fails must never look like a complete request.
    void unreadableBodies_data() {
        QTest::addColumn<qint64>("announced");
        QTest::addColumn<bool>("fails");
        QTest::newRow("shorter than announced") << qint64(2000000) << false;
        QTest::newRow("fails") << qint64(2000000) << true;
        QTest::newRow("fails, sent in chunks") << qint64(-1) << true;
    }
    void unreadableBodies() {
        QFETCH(qint64, announced);
        QFETCH(bool, fails);
        ScriptedServer server;
        server.enqueue(Answer::with(200));
        URLRequest request = makeRequest(server.url(), "PUT");
        request.bodyStream = std::make_shared<BrokenDevice>(2000000, 1500000, fails);
        request.bodyLength = announced;
        const ConnectionRecorder client = run(request);
        QVERIFY(client.error && client.error->is(URLErrorCode::requestBodyUnreadable));
        QVERIFY2(client.error->description().contains(u"1500000"_s), qPrintable(client.error->description()));
        QTRY_COMPARE(server.requests().size(), 1U);
        QVERIFY(!server.requests().front().isComplete);
    }

    void errorsByKind_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("then");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("events");
        const QByteArray head("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
        const int lost = int(URLErrorCode::networkConnectionLost);
        const auto row = [](const char* name, const QByteArray& bytes, Then then, int code, const char* events) {
            QTest::newRow(name) << bytes << int(then) << code << QString::fromLatin1(events);
        };
        row("closed without an answer", {}, Then::close, lost, "fail");
        row("reset without an answer", {}, Then::reset, lost, "fail");
        row("closed within the head", head.first(20), Then::close, lost, "fail");
        row("closed within the body", head + "12345", Then::close, lost, "response,data,fail");
        row("reset within the body", head + "12345", Then::reset, lost, "response,data,fail");
        row("a chunk too few", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n", Then::close, lost,
            "response,data,fail");
        row("no HTTP", "SSH-2.0-OpenSSH\r\n\r\n", Then::close, int(URLErrorCode::badServerResponse), "fail");
        row("broken packing", "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nabcd", Then::close,
            int(URLErrorCode::badServerResponse), "response,fail");
    }
    void errorsByKind() {
        QFETCH(QByteArray, bytes);
        QFETCH(int, then);
        QFETCH(int, code);
        QFETCH(QString, events);
        ScriptedServer server;
        server.enqueue(Answer::raw(bytes, Then(then)));
        const ConnectionRecorder client = run(makeRequest(server.url()));
        QVERIFY(client.error);
        QCOMPARE(client.error->domain(), errorDomain::url);
        QCOMPARE(client.error->code(), code);
        QVERIFY(client.error->description().contains(u"127.0.0.1"_s));
        QCOMPARE(client.events.join(','_L1), events);
    }

    void unreachable_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("code");
        QTest::newRow("nobody listens") << u"http://127.0.0.1:1/"_s << int(URLErrorCode::cannotConnectToHost);
        QTest::newRow("no such host") << u"http://nowhere.invalid/"_s << int(URLErrorCode::cannotFindHost);
    }
    void unreachable() {
        QFETCH(QString, url);
        QFETCH(int, code);
        const ConnectionRecorder client = run(makeRequest(QUrl(url)));
        QVERIFY(client.error);
        QCOMPARE(client.error->code(), code);
    }

    void onlyWebSchemes() {
        ConnectionRecorder client;
        QVERIFY(!CurlConnection::create(makeRequest(QUrl(u"file:///etc/passwd"_s)), client));
        QVERIFY(!CurlConnection::create(makeRequest(QUrl(u"ftp://127.0.0.1/"_s)), client));
        QVERIFY(CurlConnection::create(makeRequest(QUrl(u"HTTPS://127.0.0.1/"_s)), client));
    }

    // --- Time-outs ------------------------------------------------------------------------------------------------

    void standingStillTimesOut_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("before the answer") << QByteArray();
        QTest::newRow("within the head") << QByteArray("HTTP/1.1 200 OK\r\nContent-");
        QTest::newRow("within the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345");
    }
    void standingStillTimesOut() {
        QFETCH(QByteArray, bytes);
        ScriptedServer server;
        server.enqueue(Answer::raw(bytes, Then::stall));
        URLRequest request = makeRequest(server.url());
        request.timeout = 100ms;
        const ConnectionRecorder client = run(request);
        QVERIFY(client.error && client.error->is(URLErrorCode::timedOut));
    }

    // The other side takes what is in the kernel's buffers long after we have handed over the last byte.
    void slowDigestionIsNoStandstill() {
        ScriptedServer server;
        server.setReadPiece(20000);
        server.setDiscardsBodies(true);
        server.enqueue(Answer::with(200));
        URLRequest request = makeRequest(server.url(), "PUT", QByteArray(4 * 1024 * 1024, 'x'));
        request.timeout = 400ms;
        const ConnectionRecorder client = run(request);
        QVERIFY2(!client.error, client.error ? qPrintable(client.error->description()) : "");
        QCOMPARE(server.receivedBodyBytes(), request.body.size());
    }

    // --- Packing --------------------------------------------------------------------------------------------------

    void packing_data() {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("unpacked");
        QTest::newRow("as usual") << QByteArray("X-None") << QByteArray("1") << true;
        QTest::newRow("a range") << QByteArray("Range") << QByteArray("bytes=100-") << false;
        QTest::newRow("the caller's own choice") << QByteArray("Accept-Encoding") << QByteArray("deflate") << false;
    }
    void packing() {
        QFETCH(QByteArray, field);
        QFETCH(QByteArray, value);
        QFETCH(bool, unpacked);
        const QByteArray plain(100000, 'z');
        const QByteArray packed = deflated(plain);
        ScriptedServer server;
        server.enqueue(Answer::with(200, packed, {{"Content-Encoding", "deflate"}}));
        URLRequest request = makeRequest(server.url());
        request.headers.set(field, value);
        const ConnectionRecorder client = run(request);
        QVERIFY(!client.error);
        QVERIFY(client.data == (unpacked ? plain : packed));
        QCOMPARE(server.requests().front().header("Accept-Encoding").contains("deflate"), field != "Range");
    }

    // --- Cancelling -----------------------------------------------------------------------------------------------

    void cancelledFromAnyCall_data() {
        QTest::addColumn<QString>("event");
        QTest::addColumn<bool>("destroys");
        for (const char* event : {"sent", "redirect", "challenge", "response", "data", "finish"}) {
            QTest::addRow("%s, cancelled", event) << QString::fromLatin1(event) << false;
            QTest::addRow("%s, destroyed", event) << QString::fromLatin1(event) << true;
        }
    }
    void cancelledFromAnyCall() {
        QFETCH(QString, event);
        QFETCH(bool, destroys);
        ScriptedServer server;
        server.enqueue(Answer::with(307, {}, {{"Location", "/else"}}));
        server.enqueue(Answer::with(401, {}, {{"WWW-Authenticate", "Basic realm=\"x\""}}));
        server.setHandler([](const ReceivedRequest&) { return Answer::with(200, QByteArray(200000, 'd')); });
        ConnectionRecorder client;
        client.credentials = {{u"user"_s, u"word"_s}};
        auto connection = CurlConnection::create(makeRequest(server.url(), "POST", "body"), client);
        client.onEvent = [&](const QString& now) {
            if (now != event)
                return;
            if (destroys)
                connection.reset();
            else
                connection->cancel();
        };
        connection->start();
        QTRY_VERIFY(client.events.contains(event));
        // Whatever might still come is overtaken by a second exchange.
        const QStringList before = client.events;
        const ConnectionRecorder other = run(makeRequest(server.url()));
        QCOMPARE(client.events, before);
        QCOMPARE(client.events.last(), event);
    }

    void refusedDataFailsTheConnection() {
        ScriptedServer server;
        server.enqueue(Answer::with(200, QByteArray(200000, 'd')));
        ConnectionRecorder client;
        client.takesData = false;
        run(makeRequest(server.url()), client);
        QVERIFY(client.error);
        QCOMPARE(client.events.last(), u"fail"_s);
    }

    // A client may begin another exchange from inside a call, while libcurl is at work.
    void beginsAnotherFromInsideACall() {
        ScriptedServer server;
        server.setHandler([](const ReceivedRequest&) { return Answer::with(200, "yes"); });
        ConnectionRecorder second;
        std::unique_ptr<URLConnection> inner;
        ConnectionRecorder first;
        first.onEvent = [&](const QString& event) {
            if (event == "data"_L1) {
                inner = CurlConnection::create(makeRequest(server.url()), second);
                inner->start();
            }
        };
        run(makeRequest(server.url()), first);
        QTRY_VERIFY(second.isDone);
        QCOMPARE(second.data, "yes");
    }

    // --- The rest -------------------------------------------------------------------------------------------------

    void earlyAnswersAreRead() {
        ScriptedServer server;
        server.setAnswersEarly(true);
        server.enqueue(Answer::with(413, "too large"));
        const ConnectionRecorder client = run(makeRequest(server.url(), "PUT", QByteArray(5000000, 'x')));
        QCOMPARE(client.response.statusCode, 413);
        QCOMPARE(client.data, "too large");
    }

    void interimAnswersAndTrailers() {
        ScriptedServer server;
        server.enqueue(Answer::raw("HTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n"
                                   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nX-Folded: a\r\n b\r\n\r\n"
                                   "3\r\nabc\r\n0\r\nX-Trailer: t\r\n\r\n"));
        const ConnectionRecorder client = run(makeRequest(server.url()));
        QVERIFY(!client.error);
        QCOMPARE(client.response.statusCode, 200);
        QVERIFY(!client.response.headers.contains("Link"));
        QCOMPARE(client.response.headers.value("X-Folded"), "a b");
        QCOMPARE(client.data, "abc");
        QCOMPARE(client.events.count(u"response"_s), 1);
    }

    // A thread of its own gets an event loop of its own and takes everything along when it ends.
    void onAnotherThread() {
        ScriptedServer server;
        server.setHandler([](const ReceivedRequest&) { return Answer::with(200, "there"); });
        const QUrl url = server.url();
        for (int round = 0; round < 3; ++round) {
            QByteArray data;
            const std::unique_ptr<QThread> thread(QThread::create([&url, &data] {
                QEventLoop loop;
                ConnectionRecorder client;
                client.onEvent = [&loop](const QString& event) {
                    if (event == "finish"_L1 || event == "fail"_L1)
                        loop.quit();
                };
                const auto connection = CurlConnection::create(makeRequest(url), client);
                connection->start();
                loop.exec();
                data = client.data;
            }));
            thread->start();
            QTRY_VERIFY(thread->isFinished());
            thread->wait();
            QCOMPARE(data, "there");
        }
        QTRY_COMPARE(server.openConnectionCount(), 0); // none was left behind
        QCOMPARE(server.connectionCount(), 3);
    }
};

QTEST_GUILESS_MAIN(CurlConnectionTest)
#include "tst_curlconnection.moc"
