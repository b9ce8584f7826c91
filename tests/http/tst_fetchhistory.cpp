#include "http/GTMHTTPFetchHistory.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

URLRequest requestFor(int number) { return URLRequest(QUrl(u"https://h.example/%1"_s.arg(number))); }

HTTPResponse responseWith(int status, const QByteArray& etag) {
    HTTPResponse response;
    response.statusCode = status;
    response.headers.set("Etag", etag);
    return response;
}

} // namespace

class FetchHistoryTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<GTMHTTPFetchHistory> history_;

    void remember(int number, const QByteArray& data = "data") {
        history_->updateFetchHistoryWithRequest(requestFor(number), responseWith(200, QByteArray::number(number)),
                                                data);
    }
    QByteArray condition(int number, bool isGet = true) {
        URLRequest request = requestFor(number);
        history_->updateRequest(request, isGet);
        return request.headers.value("If-None-Match");
    }

private Q_SLOTS:
    void init() {
        time_ = std::make_shared<ManualTimeSource>();
        history_ = std::make_unique<GTMHTTPFetchHistory>(time_, 100, true);
    }

    void offAtTheStart() {
        GTMHTTPFetchHistory history(time_);
        QCOMPARE(history.memoryCapacity(), 15728640);
        QVERIFY(!history.shouldCacheETaggedData());
        history.updateFetchHistoryWithRequest(requestFor(1), responseWith(200, "e"), "x");
        URLRequest request = requestFor(1);
        history.updateRequest(request, true);
        QVERIFY(!request.headers.contains("If-None-Match"));
        QVERIFY(!request.reloadIgnoringLocalCache);
    }

    void conditions() {
        remember(1);
        QCOMPARE(condition(1), "1");
        QCOMPARE(condition(1, false), QByteArray());
        QCOMPARE(condition(2), QByteArray());
        URLRequest own = requestFor(1); // the caller manages it: what is remembered goes
        own.headers.set("If-None-Match", "his");
        history_->updateRequest(own, true);
        QCOMPARE(own.headers.value("If-None-Match"), "his");
        QCOMPARE(condition(1), QByteArray());
    }

    void whatIsForgotten_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("etag");
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("condition");
        QTest::newRow("not modified") << 304 << QByteArray() << QByteArray() << QByteArray("1");
        QTest::newRow("a new answer") << 200 << QByteArray("2") << QByteArray() << QByteArray("2");
        QTest::newRow("without an ETag") << 200 << QByteArray() << QByteArray() << QByteArray();
        QTest::newRow("an error") << 404 << QByteArray("3") << QByteArray() << QByteArray();
        QTest::newRow("a change") << 200 << QByteArray("4") << QByteArray("PUT") << QByteArray();
    }
    void whatIsForgotten() {
        QFETCH(int, status);
        QFETCH(QByteArray, etag);
        QFETCH(QByteArray, method);
        remember(1);
        HTTPResponse response;
        response.statusCode = status;
        response.headers.set("X-Any", "1");
        if (!etag.isEmpty())
            response.headers.set("ETag", etag);
        URLRequest request = requestFor(1);
        request.httpMethod = method;
        history_->updateFetchHistoryWithRequest(request, response, "x");
        QTEST(condition(1), "condition");
    }

    void dataOnlyWhenWanted() {
        remember(1);
        QCOMPARE(history_->cachedDataForRequest(requestFor(1)), "data");
        QVERIFY(history_->cachedDataForRequest(requestFor(2)).isNull());
        history_->setShouldCacheETaggedData(false); // drops what there was
        QCOMPARE(condition(1), QByteArray());
        remember(1);
        QCOMPARE(condition(1), "1");
        QVERIFY(history_->cachedDataForRequest(requestFor(1)).isEmpty());
    }

    void leastRecentlyUsedGoesFirst() {
        for (int i = 1; i <= 4; ++i)
            remember(i, QByteArray(25, 'x'));
        history_->cachedDataForRequest(requestFor(1));
        remember(5, QByteArray(26, 'x'));
        QVERIFY(history_->cachedDataForRequest(requestFor(2)).isNull());
        QVERIFY(history_->cachedDataForRequest(requestFor(3)).isNull()); // one more byte than there is room for
        QVERIFY(!history_->cachedDataForRequest(requestFor(1)).isNull());
        QVERIFY(!history_->cachedDataForRequest(requestFor(4)).isNull());
        history_->setMemoryCapacity(60);
        QVERIFY(history_->cachedDataForRequest(requestFor(5)).isNull());
    }

    void aReservedEntryIsNotPruned_data() {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("used"); // its data was asked for meanwhile
        QTest::addColumn<bool>("survives");
        QTest::newRow("in flight") << 59 << false << true;
        QTest::newRow("for too long") << 60 << false << false;
        QTest::newRow("answered") << 1 << true << false;
    }
    void aReservedEntryIsNotPruned() {
        QFETCH(int, seconds);
        QFETCH(bool, used);
        QFETCH(bool, survives);
        remember(1, QByteArray(50, 'x'));
        QCOMPARE(condition(1), "1");
        if (used)
            history_->cachedDataForRequest(requestFor(1));
        time_->jumpWallClock(-48h);
        time_->advance(std::chrono::seconds(seconds));
        remember(2, QByteArray(30, 'x'));
        remember(3, QByteArray(30, 'x'));
        QCOMPARE(!history_->cachedDataForRequest(requestFor(1)).isNull(), survives);
        QCOMPARE(!history_->cachedDataForRequest(requestFor(2)).isNull(), !survives);
        QVERIFY(!history_->cachedDataForRequest(requestFor(3)).isNull());
    }

    void tooLargeIsNotStored() {
        remember(1, QByteArray(100, 'x'));
        QCOMPARE(condition(1), QByteArray());
        remember(1, QByteArray(99, 'x'));
        QCOMPARE(condition(1), "1");
    }

    void sizesAddUp() {
        GTMURLCache cache(1000, time_);
        for (const int length : {10, 20, 30})
            cache.storeCachedResponse(responseWith(200, "e"), QByteArray(length, 'x'), requestFor(length % 20));
        QCOMPARE(cache.totalDataSize(), 50); // the third replaced the first
        cache.removeCachedResponseForRequest(requestFor(0));
        QCOMPARE(cache.totalDataSize(), 30);
        cache.removeAllCachedResponses();
        QCOMPARE(cache.totalDataSize(), 0);
    }
};

QTEST_GUILESS_MAIN(FetchHistoryTest)
#include "tst_fetchhistory.moc"
