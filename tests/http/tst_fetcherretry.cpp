#include "tests/http/FetcherBench.h"

#include <QBuffer>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

using Bench = FetcherBench;

class FetcherRetryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { silenceExpectedErrors(); }

    void retryTable_data() {
        QTest::addColumn<int>("status"); // 0: a URL error
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("retries");
        for (const int status : {408, 503, 504})
            QTest::addRow("%d", status) << status << 0 << true;
        for (const int status : {400, 401, 403, 404, 429, 500, 502})
            QTest::addRow("%d", status) << status << 0 << false;
        QTest::newRow("timed out") << 0 << -1001 << true;
        QTest::newRow("connection lost") << 0 << -1005 << true;
        QTest::newRow("no host") << 0 << -1003 << false;
    }
    void retryTable() {
        QFETCH(int, status);
        QFETCH(int, code);
        QFETCH(bool, retries);
        for (const bool enabled : {true, false}) {
            Bench bench;
            bench.fetcher->setRetryEnabled(enabled);
            bench.begin();
            if (status > 0)
                bench.network.last().answer(status);
            else
                bench.network.last().fail(Error(errorDomain::url, code));
            QCOMPARE(bench.fetcher->isFetching(), retries && enabled);
            settle();
            QCOMPARE(bench.calls, retries && enabled ? 0 : 1);
        }
    }

    // Delays double; when the next would reach the maximum there is no further attempt.
    void backOff_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<double>("maximum"); // 0: the default of the method
        QTest::addColumn<QList<double>>("delays");
        QTest::newRow("GET") << QByteArray("GET") << 0.0 << QList<double>{1.5, 3, 6, 12, 24, 48};
        QTest::newRow("HEAD") << QByteArray("HEAD") << 0.0 << QList<double>{1.5, 3, 6, 12, 24, 48};
        QTest::newRow("POST") << QByteArray("POST") << 0.0 << QList<double>{1.5, 3, 6, 12, 24, 48, 96, 192, 384};
        QTest::newRow("given") << QByteArray("POST") << 10.0 << QList<double>{1.5, 3, 6};
    }
    void backOff() {
        QFETCH(QByteArray, method);
        QFETCH(double, maximum);
        QFETCH(QList<double>, delays);
        Bench bench(u"https://h.example/"_s, method);
        bench.fetcher->setRetryEnabled(true);
        bench.fetcher->setMinRetryInterval(1.5);
        if (maximum > 0)
            bench.fetcher->setMaxRetryInterval(maximum);
        bench.begin();
        for (const double delay : delays) {
            QVERIFY(bench.fetcher->isFetching());
            bench.network.last().answer(503);
            QCOMPARE(bench.time->nextDelay(), std::chrono::milliseconds(qint64(delay * 1000)));
            bench.time->jumpWallClock(48h); // only time that really passed counts
            bench.time->advance(bench.time->nextDelay());
        }
        bench.answer(503);
        QCOMPARE(bench.calls, 1);
        QVERIFY(bench.error->isHTTPStatus(503));
        QCOMPARE(bench.fetcher->retryCount(), unsigned(delays.size()));
    }

    void retryEndsInTime() {
        for (const bool late : {false, true}) {
            Bench bench;
            bench.fetcher->setRetryEnabled(true);
            bench.begin();
            bench.time->advance(late ? 180001ms : 180000ms);
            bench.network.last().answer(503);
            QCOMPARE(bench.fetcher->isFetching(), !late);
        }
    }

    void retryAfter_data() {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<int>("delay"); // seconds
        QTest::newRow("longer than ours") << QByteArray("30") << 30;
        QTest::newRow("shorter than ours") << QByteArray("0") << 2;
        QTest::newRow("more than the maximum") << QByteArray("3600") << 2;
        QTest::newRow("a date") << QByteArray("Thu, 01 Jan 2026 12:00:40 GMT") << 40;
        QTest::newRow("a date that has passed") << QByteArray("Thu, 01 Jan 2026 11:00:00 GMT") << 2;
        QTest::newRow("nonsense") << QByteArray("soon") << 2;
    }
    void retryAfter() {
        QFETCH(QByteArray, field);
        QFETCH(int, delay);
        Bench bench;
        bench.fetcher->setRetryEnabled(true);
        bench.fetcher->setMinRetryInterval(2);
        bench.begin();
        bench.network.last().answer(503, {}, fields({{"Retry-After", field}}));
        QCOMPARE(bench.time->nextDelay(), std::chrono::milliseconds(delay * 1000));
    }

    // The selector gets the proposal, the block what the selector made of it; without a chance nobody is asked.
    void retryHooks_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<int>("selector"); // -1: none, else its answer
        QTest::addColumn<int>("block");
        QTest::addColumn<QString>("asked"); // who was asked with which proposal
        QTest::addColumn<bool>("retries");
        QTest::newRow("selector overrules") << 500 << true << 1 << -1 << u"s0"_s << true;
        QTest::newRow("block has the last word") << 503 << true << 1 << 0 << u"s1b1"_s << false;
        QTest::newRow("block sees the selector's answer") << 503 << true << 0 << 1 << u"s1b0"_s << true;
        QTest::newRow("disabled: not asked") << 503 << false << 1 << 1 << QString() << false;
    }
    void retryHooks() {
        QFETCH(int, status);
        QFETCH(bool, enabled);
        QFETCH(int, selector);
        QFETCH(int, block);
        Bench bench;
        QString seen;
        bench.fetcher->setRetryEnabled(enabled);
        if (selector >= 0) {
            bench.fetcher->setRetrySelector([&, selector](GTMHTTPFetcher&, bool suggestion, const Error&) {
                seen += u"s%1"_s.arg(int(suggestion));
                return selector == 1;
            });
        }
        if (block >= 0) {
            bench.fetcher->setRetryBlock([&, block](bool suggestion, const Error& error) {
                seen += u"b%1"_s.arg(int(suggestion));
                return block == 1 && error.isHTTPStatus(503);
            });
        }
        bench.begin();
        bench.network.last().answer(status, "body");
        QTEST(seen, "asked");
        QTEST(bench.fetcher->isFetching(), "retries");
    }

    void stoppedFromARetryHook() {
        Bench bench;
        bench.fetcher->setRetryEnabled(true);
        bench.fetcher->setRetryBlock([&bench](bool, const Error&) {
            bench.fetcher->stopFetching();
            return true;
        });
        bench.fetch(503);
        QVERIFY(!bench.fetcher->isFetching());
        QCOMPARE(bench.time->pendingTimers(), 0U);
        QCOMPARE(bench.calls, 0);
    }

    void streamsAreSentAgainFromTheirStart() {
        Bench bench;
        auto buffer = std::make_shared<QBuffer>();
        buffer->setData("0123456789");
        buffer->open(QIODevice::ReadOnly);
        buffer->seek(4);
        bench.fetcher->setPostStream(buffer);
        bench.fetcher->setRetryEnabled(true);
        bench.begin();
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(bench.network.last().request.bodyStream->read(3), "456");
            bench.network.last().answer(503);
            bench.time->advance(bench.time->nextDelay());
        }
    }
};

QTEST_GUILESS_MAIN(FetcherRetryTest)
#include "tst_fetcherretry.moc"
