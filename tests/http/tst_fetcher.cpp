// Beginning, ending, progress.
#include "tests/http/FetcherBench.h"

#include <QBuffer>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <thread>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

using Bench = FetcherBench;

class FetcherTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { silenceExpectedErrors(); }

    // --- Beginning ------------------------------------------------------------------------------------------------

    void schemes_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QStringList>("insecure");
        QTest::addColumn<bool>("localhost");
        QTest::addColumn<QString>("refusal"); // empty: it begins
        const QStringList none;
        const QStringList http{u"HTTP"_s};
        const auto row = [](const char* url, const QStringList& insecure, bool localhost, const char* refusal = "") {
            QTest::addRow("%s%s%s", url, insecure.isEmpty() ? "" : " insecure", localhost ? " localhost" : "")
                << QString::fromLatin1(url) << insecure << localhost << QString::fromLatin1(refusal);
        };
        row("https://a.example/", none, false);
        row("HTTPS://a.example/", none, false);
        row("http://a.example/", none, false, "Fetch disallowed for http://a.example/");
        row("http://a.example/", none, true, "Fetch disallowed for http://a.example/");
        row("http://a.example/", http, false);
        row("ftp://a.example/", http, false, "Fetch disallowed for ftp://a.example/");
        row("http://LocalHost/", http, false, "Localhost fetch disallowed for http://localhost/");
        row("http://127.0.0.1:80/", http, false, "Localhost fetch disallowed for http://127.0.0.1:80/");
        row("http://[::1]/", none, true);
        row("http://127.0.0.1/", none, true);
        row("https://localhost/", none, false);
        row("", none, false, "The request has no valid address.");
    }
    void schemes() {
        QFETCH(QString, url);
        QFETCH(QStringList, insecure);
        QFETCH(bool, localhost);
        QFETCH(QString, refusal);
        Bench bench(url);
        bench.fetcher->setAllowedInsecureSchemes(insecure);
        bench.fetcher->setAllowLocalhostRequest(localhost);
        if (refusal.contains("disallowed"_L1))
            QTest::ignoreMessage(QtWarningMsg, qPrintable(refusal));
        QCOMPARE(bench.begin(), refusal.isEmpty());
        QCOMPARE(bench.calls, 0); // never from inside begin
        settle();
        QCOMPARE(bench.calls, refusal.isEmpty() ? 0 : 1);
        if (refusal.isEmpty())
            return;
        QVERIFY(bench.error->is(FetcherErrorCode::fetchCouldNotBegin));
        QCOMPARE(bench.error->detail(errorKey::reason).toString(), refusal);
        QVERIFY(!bench.fetcher->isFetching());
        QVERIFY(bench.notifications.isEmpty());
    }

    void aBodyMakesAPost_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("override");
        QTest::addColumn<bool>("stream");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("no method") << QByteArray() << QByteArray() << false << QByteArray("POST");
        QTest::newRow("GET") << QByteArray("GET") << QByteArray() << true << QByteArray("POST");
        QTest::newRow("override GET") << QByteArray("PUT") << QByteArray("GET") << false << QByteArray("POST");
        QTest::newRow("override PATCH") << QByteArray("GET") << QByteArray("PATCH") << false << QByteArray("GET");
        QTest::newRow("PUT") << QByteArray("PUT") << QByteArray() << true << QByteArray("PUT");
    }
    void aBodyMakesAPost() {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, override);
        QFETCH(bool, stream);
        Bench bench(u"https://h.example/"_s, method);
        if (!override.isEmpty())
            bench.fetcher->mutableRequest().headers.set("X-HTTP-Method-Override", override);
        auto buffer = std::make_shared<QBuffer>();
        buffer->open(QIODevice::ReadOnly);
        if (stream)
            bench.fetcher->setPostStream(buffer);
        else
            bench.fetcher->setPostData({}); // an empty body is a body
        QVERIFY(bench.begin());
        QTEST(bench.network.last().request.httpMethod, "sent");
    }

    void whatCannotBeginStillCallsBack() {
        Bench bench;
        bench.network.refusesConnections = true;
        QVERIFY(!bench.begin());
        settle();
        QVERIFY(bench.error->is(FetcherErrorCode::fetchCouldNotBegin));

        bench.network.refusesConnections = false;
        QVERIFY(bench.begin()); // it may be begun again
        int refused = 0;
        QVERIFY(!bench.fetcher->beginFetchWithCompletionHandler(
            &bench.context, [&refused](const QByteArray&, const MaybeError& error) { refused += error ? 1 : 0; }));
        bench.answer(200, "unharmed");
        QCOMPARE(refused, 1);
        QCOMPARE(bench.data, "unharmed");
    }

    // --- Ending ---------------------------------------------------------------------------------------------------

    void deliversOnce() {
        Bench bench;
        std::weak_ptr<GTMHTTPFetcher> weak = bench.fetcher;
        QVERIFY(bench.begin());
        bench.fetcher.reset(); // it keeps itself alive
        QVERIFY(!weak.expired());
        auto& exchange = bench.network.last();
        QVERIFY(exchange.isStarted);
        exchange.receiveHead(100);
        exchange.receiveData("stale");
        exchange.receiveHead(200, fields({{"Content-Length", "4"}})); // a response empties what came before
        exchange.receiveData("da");
        exchange.receiveData("ta");
        exchange.finish();
        QCOMPARE(bench.calls, 0);
        settle();
        QCOMPARE(bench.calls, 1);
        QCOMPARE(bench.data, "data");
        QVERIFY(!bench.error);
        QCOMPARE(bench.notifications, (QStringList{u"Started"_s, u"Stopped"_s}));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(weak.expired());
    }

    void httpErrorsCarryTheBody() {
        Bench bench(u"https://h.example/f?access_token=secret&x=1"_s);
        bench.fetch(404, "{\"error\":1}");
        QVERIFY(bench.error->isHTTPStatus(404));
        QCOMPARE(bench.error->detail(errorKey::data).toByteArray(), "{\"error\":1}");
        QCOMPARE(bench.data, "{\"error\":1}");
        QCOMPARE(bench.error->detail(errorKey::reason).toString(),
                 u"The server answered 404 Not Found to GET https://h.example/f?access_token=_snip_&x=1"_s);
        QCOMPARE(bench.fetcher->statusCode(), 404);
    }

    void secretAddressesStaySecret() {
        Bench bench(u"https://h.example/s3cret/path?s3cret=1"_s);
        bench.fetcher->setIsURLSecret(true);
        bench.fetch(500);
        QVERIFY(!bench.error->description().contains(u"s3cret"_s));
        QVERIFY(!bench.error->detail(errorKey::request).toString().contains(u"s3cret"_s));
        QVERIFY(bench.error->description().contains(u"h.example"_s));

        Bench refused(u"http://h.example/s3cret"_s);
        refused.fetcher->setIsURLSecret(true);
        QTest::ignoreMessage(QtWarningMsg, "Fetch disallowed for http://h.example/_snip_");
        QVERIFY(!refused.begin());
    }

    void stoppingIsSilent_data() {
        QTest::addColumn<int>("moment");
        QTest::addColumn<bool>("elsewhere"); // from another thread
        for (const bool elsewhere : {false, true}) {
            const char* where = elsewhere ? "elsewhere" : "here";
            QTest::addRow("authorizing, %s", where) << 0 << elsewhere;
            QTest::addRow("connected, %s", where) << 1 << elsewhere;
            QTest::addRow("waiting to retry, %s", where) << 2 << elsewhere;
            QTest::addRow("ended but not yet called back, %s", where) << 3 << elsewhere;
        }
    }
    void stoppingIsSilent() {
        QFETCH(int, moment);
        QFETCH(bool, elsewhere);
        Bench bench;
        const auto authorizer = std::make_shared<FakeAuthorizer>();
        authorizer->isHolding = moment == 0;
        bench.fetcher->setAuthorizer(authorizer);
        bench.fetcher->setRetryEnabled(true);
        bench.begin();
        if (moment > 0)
            settle();
        if (moment == 2)
            bench.network.last().answer(503);
        if (moment == 3)
            bench.network.last().answer(200);
        if (elsewhere)
            std::thread([&bench] { bench.fetcher->stopFetching(); }).join();
        else
            bench.fetcher->stopFetching();
        settle();
        for (const auto& gate : authorizer->held)
            gate.deliver(bench.fetcher->request(), std::nullopt);
        bench.time->advance(1h);
        settle();
        QCOMPARE(bench.calls, 0);
        QVERIFY(!bench.fetcher->isFetching());
        QCOMPARE(bench.attempts(), moment == 0 ? 0U : 1U);
        QStringList expected;
        if (moment > 0)
            expected = {u"Started"_s, u"Stopped"_s};
        if (moment == 2)
            expected << u"RetryDelayStarted"_s << u"RetryDelayStopped"_s;
        QCOMPARE(bench.notifications, expected);
        if (moment == 1)
            QVERIFY(bench.network.last().isCancelled);
    }

    // A stop that another thread ordered for one fetch must not end the next one.
    void lateStopsSpareTheNextFetch() {
        Bench bench;
        bench.begin();
        std::thread([&bench] { bench.fetcher->stopFetching(); }).join();
        bench.fetcher->stopFetching();
        bench.begin();
        settle();
        QVERIFY(bench.fetcher->isFetching());
        bench.answer(200, "second");
        QCOMPARE(bench.data, "second");
        QCOMPARE(bench.calls, 1);
    }

    void stoppedFromItsOwnProgress() {
        Bench bench;
        const auto captured = std::make_shared<int>(0);
        bench.fetcher->setReceivedDataBlock([&bench, captured](const QByteArray&) {
            bench.fetcher->stopFetching(); // releases this very function
            ++*captured;
        });
        bench.begin();
        bench.network.last().receiveHead(200);
        bench.network.last().receiveData("x");
        QCOMPARE(*captured, 1);
        QCOMPARE(captured.use_count(), 1L);
    }

    void waits() {
        Bench bench;
        bench.begin();
        QVERIFY(!bench.fetcher->waitForCompletionWithTimeout(10ms));
        QTimer::singleShot(0, &bench.context, [&bench] { bench.network.last().answer(200, "in time"); });
        QVERIFY(bench.fetcher->waitForCompletionWithTimeout(20s));
        QCOMPARE(bench.calls, 1);
    }

    // --- Progress and the delegate queue --------------------------------------------------------------------------

    void callbacksOnTheDelegateQueue() {
        QThread thread;
        thread.start();
        auto* queue = new QObject;
        queue->moveToThread(&thread);
        Bench bench;
        std::atomic<int> progress = 0;
        std::atomic<int> retries = 0;
        std::atomic<int> finished = 0;
        std::atomic<bool> isElsewhere = true;
        const auto note = [&](std::atomic<int>& counter) {
            ++counter;
            if (QThread::currentThread() != &thread)
                isElsewhere = false;
        };
        bench.fetcher->setDelegateQueue(queue);
        bench.fetcher->setRetryEnabled(true);
        bench.fetcher->setSentDataBlock([&](qint64, qint64, qint64) { note(progress); });
        bench.fetcher->setReceivedDataBlock([&](const QByteArray&) { note(progress); });
        bench.fetcher->setRetryBlock([&](bool suggestion, const Error&) {
            note(retries);
            return suggestion;
        });
        bench.fetcher->beginFetchWithCompletionHandler(&bench.context,
                                                       [&](const QByteArray&, const MaybeError&) { note(finished); });
        bench.network.last().send(1, 1, 1);
        bench.network.last().answer(503);
        QTRY_COMPARE(bench.time->pendingTimers(), 1U);
        QCOMPARE(retries.load(), 1);
        bench.time->advance(1min);
        bench.network.last().answer(200, "x");
        QTRY_COMPARE(finished.load(), 1);
        QCOMPARE(progress.load(), 2);
        QVERIFY(isElsewhere);

        // The queue lives on, but the callback dies with its context.
        auto context = std::make_unique<QObject>();
        bench.fetcher->beginFetchWithCompletionHandler(context.get(),
                                                       [&](const QByteArray&, const MaybeError&) { ++finished; });
        context.reset();
        bench.answer(200);
        bench.fetcher.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // while the queue's thread is there
        queue->deleteLater();
        thread.quit();
        thread.wait();
        QCOMPARE(finished.load(), 1);
    }

    void progressReachesSelectorAndBlock() {
        Bench bench;
        QStringList seen;
        bench.fetcher->setSentDataSelector([&](GTMHTTPFetcher&, qint64 now, qint64 total, qint64 expected) {
            seen << u"s%1/%2/%3"_s.arg(now).arg(total).arg(expected);
        });
        bench.fetcher->setSentDataBlock(
            [&](qint64 now, qint64 total, qint64) { seen << u"b%1/%2"_s.arg(now).arg(total); });
        bench.fetcher->setReceivedDataSelector(
            [&](GTMHTTPFetcher&, const QByteArray& soFar) { seen << QString::fromLatin1(soFar); });
        bench.begin();
        bench.network.last().send(3, 7, 10);
        bench.network.last().receiveHead(200);
        bench.network.last().receiveData("ab");
        bench.network.last().receiveData("c");
        QCOMPARE(seen, (QStringList{u"s3/7/10"_s, u"b3/7"_s, u"ab"_s, u"abc"_s}));
    }
};

QTEST_GUILESS_MAIN(FetcherTest)
#include "tst_fetcher.moc"
