// An upload that is resumed, paused, stopped, or loses its file; and what it needs from the machine.
#include "http/FetchLog.h"
#include "http/GTMHTTPFetcherService.h"
#include "tests/http/UploadTest.h"

using namespace Qt::StringLiterals;

namespace quenby {
namespace {

// A sanitizer keeps what was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isMemoryMeasurable = false;
#else
constexpr bool isMemoryMeasurable = true;
#endif

qint64 peakMemory() {
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return -1;
}

} // namespace

using namespace testing;

class UploadLifecycleTest : public testing::UploadTest {
    Q_OBJECT

private Q_SLOTS:
    void init() { reset(); }

    void resumesAtAKnownLocation_data() {
        QTest::addColumn<bool>("hasBase");
        QTest::newRow("without authorizer") << false;
        QTest::newRow("with authorizer") << true;
    }

    void resumesAtAKnownLocation() {
        QFETCH(bool, hasBase);
        UploadServer server({holding(400), created()});
        GTMHTTPUploadFetcher& fetcher = resumed(server, pattern(1000), hasBase ? server.url(u"/upload/rpc"_s) : QUrl());
        fetcher.setAuthorizer(refreshingAuthorizer());
        QList<qint64> sums;
        fetcher.setSentDataBlock([&sums](qint64, qint64 sent, qint64 expected) { sums = {sent, expected}; });
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(!error_, qPrintable(failure()));
        QCOMPARE(server.lines(), QByteArrayList({"PUT bytes */1000", "PUT bytes 400-999/1000"}));
        QVERIFY(server.requests().back().body == pattern(1000).sliced(400));
        QCOMPARE(sums, QList<qint64>({1000, 1000}));
        QCOMPARE(server.requests().back().headers.contains("authorization"), hasBase);
    }

    void pausesAndResumes() {
        bool hasPaused = false;
        bool hasResumed = false;
        UploadServer server({announced(), holding(3000)});
        server.setHandler([&hasResumed](const ReceivedRequest& request) {
            const bool isLast = hasResumed && request.header("Content-Range").startsWith("bytes 3000");
            return isLast ? created() : holding(3000);
        });
        GTMHTTPUploadFetcher& fetcher = upload(server, pattern(8000), 3000);
        fetcher.setSentDataBlock([&](qint64, qint64 sent, qint64) { // in the second chunk
            if (sent <= 3007 || std::exchange(hasPaused, true))
                return;
            fetcher.pauseFetching();
            QVERIFY2(fetcher.activeFetcher().get() == &fetcher, "the chunk goes on");
        });
        begin();
        QTRY_VERIFY(hasPaused);
        QVERIFY(fetcher.isPaused() && fetcher.isFetching());
        hasResumed = true;
        fetcher.resumeFetching();
        fetcher.resumeFetching(); // the second does nothing
        QVERIFY(fetcher.waitForCompletionWithTimeout(std::chrono::seconds(20)));
        QVERIFY2(!error_ && callbacks_ == 1, qPrintable(failure()));
        QCOMPARE(server.lines().sliced(server.lines().size() - 2),
                 QByteArrayList({"PUT bytes */8000", "PUT bytes 3000-7999/8000"}));
    }

    void pausedFromTheStart() {
        UploadServer server({announced(), holding(1), created()});
        GTMHTTPUploadFetcher& fetcher = upload(server, pattern(9000), noChunking);
        fetcher.pauseFetching();
        begin();
        QTRY_COMPARE(locations_.size(), 1);
        QCOMPARE(server.lines().size(), 1); // announced, nothing sent
        fetcher.resumeFetching();
        QVERIFY(fetcher.waitForCompletionWithTimeout(std::chrono::seconds(20)));
        QCOMPARE(server.lines(), QByteArrayList({"POST", "PUT bytes */9000", "PUT bytes 1-8999/9000"}));

        UploadServer second({created()});
        GTMHTTPUploadFetcher& known = resumed(second, pattern(10));
        known.pauseFetching();
        begin();
        QVERIFY(known.isFetching() && known.activeFetcher().get() == &known);
        known.resumeFetching();
        QVERIFY(known.waitForCompletionWithTimeout(std::chrono::seconds(20)));
        QCOMPARE(second.lines(), QByteArrayList({"PUT bytes */10"}));
    }

    void resumedWhileToldTheLocation() {
        UploadServer server({announced(), holding(1), created()});
        GTMHTTPUploadFetcher& fetcher = upload(server, pattern(9000), noChunking);
        fetcher.setLocationChangeBlock([&fetcher](const QUrl& location) {
            if (location.isEmpty())
                return;
            fetcher.pauseFetching();
            fetcher.resumeFetching();
        });
        QVERIFY2(finish() && !error_, qPrintable(failure()));
        QCOMPARE(server.lines(), QByteArrayList({"POST", "PUT bytes */9000", "PUT bytes 1-8999/9000"}));
    }

    // Bytes wait for whoever has to write down the location first; asking the server does not.
    void gateHoldsBytes() {
        UploadServer server({announced(), holding(1), created()});
        GTMHTTPUploadFetcher& fetcher = upload(server, pattern(9000), noChunking);
        std::vector<std::function<void()>> goOn;
        fetcher.setSendGate([&goOn](std::function<void()> next) { goOn.push_back(std::move(next)); });
        begin();
        QTRY_COMPARE(goOn.size(), size_t(1));
        fetcher.pauseFetching();
        fetcher.resumeFetching();
        goOn[0](); // too late: the server was asked meanwhile
        QTRY_COMPARE(goOn.size(), size_t(2));
        QCOMPARE(fetcher.currentOffset(), quint64(1));
        QCOMPARE(server.lines(), QByteArrayList({"POST", "PUT bytes */9000"}));
        goOn[1]();
        goOn[1]();
        QVERIFY(fetcher.waitForCompletionWithTimeout(std::chrono::seconds(20)));
        QVERIFY2(!error_ && callbacks_ == 1, qPrintable(failure()));
        QCOMPARE(server.lines(), QByteArrayList({"POST", "PUT bytes */9000", "PUT bytes 1-8999/9000"}));
    }

    void stopIsSilentInEveryState_data() {
        QTest::addColumn<int>("stopAt");
        QTest::newRow("before the announcement arrived") << 0;
        QTest::newRow("told the location") << 1;
        QTest::newRow("from a progress callback") << 2;
        QTest::newRow("while a chunk waits for its answer") << 3;
        QTest::newRow("paused") << 4;
    }

    void stopIsSilentInEveryState() {
        QFETCH(int, stopAt);
        bool hasStopped = false;
        std::weak_ptr<GTMHTTPUploadFetcher> weak;
        const auto stop = [&](int state) {
            if (state != stopAt || std::exchange(hasStopped, true))
                return;
            const auto fetcher = weak.lock();
            if (state == 4)
                fetcher->pauseFetching();
            fetcher->stopFetching();
        };
        UploadServer server({announced()});
        server.setHandler([&stop](const ReceivedRequest&) {
            stop(3);
            stop(4);
            return holding(3000);
        });
        GTMHTTPUploadFetcher& fetcher = upload(server, pattern(9000), 3000);
        weak = fetcher_;
        fetcher.setLocationChangeBlock([&stop](const QUrl&) { stop(1); });
        fetcher.setSentDataBlock([&stop](qint64, qint64 sent, qint64) {
            if (sent > 7)
                stop(2);
        });
        begin();
        fetcher_.reset(); // it keeps itself alive as long as it runs, and no longer
        stop(0);
        QTRY_VERIFY(hasStopped);
        QTRY_VERIFY(weak.expired());
        QTest::qWait(0);
        QCOMPARE(callbacks_, 0);
        QVERIFY(server.lines().size() <= 2);
    }

    void fileThatShrinksEndsTheUpload() {
        for (const bool retries : {false, true}) {
            reset();
            const auto source = file(pattern(200'000));
            UploadServer server;
            server.setHandler([&source](const ReceivedRequest& request) {
                source->resize(50'000);
                return request.method == "POST" ? announced() : holding(1000);
            });
            use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), source, "x/y", noChunking, {}));
            fetcher_->setRetryEnabled(retries);
            fetcher_->setRetryBlock([](bool, const Error&) { return true; });
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^uploadFileHandle exception: .*shorter"_s));
            QVERIFY2(finish(), qPrintable(failure()));
            QVERIFY2(error_->is(URLErrorCode::requestBodyUnreadable), qPrintable(failure()));
            QVERIFY2(failure().contains(u"shorter"_s), qPrintable(failure()));
        }
    }

    void fileThatCannotBeReadIsNotAnnounced() {
        UploadServer server;
        use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), std::make_shared<QFile>(), "x/y",
                                                           noChunking, {}));
        QVERIFY(finish());
        QVERIFY(error_->is(URLErrorCode::requestBodyUnreadable));
        QVERIFY(server.requests().empty());
    }

    void settingsOfTheServiceAreLent() {
        UploadServer server({announced(), created()});
        const auto service = GTMHTTPFetcherService::create();
        service->setUserAgent("from-service");
        service->setAllowLocalhostRequest(true);
        const auto log = std::make_shared<FetchLog>(folder_.filePath(u"log"_s), u"p"_s, u"d"_s);
        service->setLogger(log);
        URLRequest request = announcement(server);
        request.headers.remove("User-Agent");
        fetcher_ = GTMHTTPUploadFetcher::uploadFetcherWithRequest(request, pattern(5000), "x/y", noChunking, service);
        QVERIFY2(finish(), qPrintable(failure()));
        for (const auto& seen : server.requests())
            QCOMPARE(seen.header("user-agent"), "from-service");
        QCOMPARE(server.requests().back().body.size(), 5000); // the log was in between
        log->flush();
        QByteArray written;
        const QDir run = QFileInfo(log->pagePath()).dir();
        for (const QString& name : run.entryList(QDir::Files)) {
            QFile entry(run.filePath(name));
            QVERIFY(entry.open(QIODevice::ReadOnly));
            written += entry.readAll();
        }
        QVERIFY(written.contains("(bytes 0-4999/5000)") && written.contains("request: PUT"));
        QVERIFY2(!written.contains("S3CRET"), written);
    }

    // There is one place: whoever comes second waits for the whole upload, or until it is paused.
    void holdsOnePlaceWhileChunksRun_data() {
        QTest::addColumn<bool>("pauses");
        QTest::newRow("to the end") << false;
        QTest::newRow("until it is paused") << true;
    }

    void holdsOnePlaceWhileChunksRun() {
        QFETCH(bool, pauses);
        UploadServer server(pauses ? QList<Answer>{announced(), created(), holding(3000), created()}
                                   : QList<Answer>{announced(), holding(3000), created(), created()});
        const auto service = GTMHTTPFetcherService::create();
        service->setMaxRunningFetchersPerHost(1);
        QObject context;
        int secondCallbacks = 0;
        const auto second = GTMHTTPUploadFetcher::uploadFetcherWithLocation(server.url(session), file("0123456789"),
                                                                            "x/y", noChunking, service);
        second->setAllowLocalhostRequest(true);
        GTMHTTPUploadFetcher& first = use(
            GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), pattern(8000), "x/y", 3000, service));
        first.setLocationChangeBlock([&](const QUrl& location) {
            if (pauses && !location.isEmpty())
                first.pauseFetching();
        });
        begin();
        second->beginFetchWithCompletionHandler(&context, [&](const QByteArray&, const MaybeError& error) {
            secondCallbacks += error ? 0 : 1;
            first.resumeFetching();
        });
        QVERIFY(service->isDelayingFetcher(*second) && second->isFetching());
        QVERIFY(second->waitForCompletionWithTimeout(std::chrono::seconds(20)));
        QVERIFY(first.waitForCompletionWithTimeout(std::chrono::seconds(20)));
        QVERIFY2(!error_ && callbacks_ == 1 && secondCallbacks == 1, qPrintable(failure()));
        const QByteArrayList turn = {"PUT bytes 0-2999/8000", "PUT bytes 3000-7999/8000", "PUT bytes */10"};
        const QByteArrayList givenWay = {"PUT bytes */10", "PUT bytes */8000", "PUT bytes 3000-7999/8000"};
        QCOMPARE(server.lines(), QByteArrayList({"POST"}) + (pauses ? givenWay : turn));
        QCOMPARE(service->numberOfFetchers(), 0U);
    }

    void theServiceStopsUploads() {
        UploadServer server({announced()});
        const auto service = GTMHTTPFetcherService::create();
        server.setHandler([&service](const ReceivedRequest&) {
            service->stopAllFetchers();
            return holding(3000);
        });
        use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), pattern(9000), "x/y", 3000, service));
        const std::weak_ptr<GTMHTTPUploadFetcher> weak = fetcher_;
        begin();
        fetcher_.reset();
        QTRY_VERIFY(weak.expired());
        QCOMPARE(server.lines(), QByteArrayList({"POST", "PUT bytes 0-2999/9000"}));
        QCOMPARE(callbacks_, 0);
        QCOMPARE(service->numberOfFetchers(), 0U);
    }

    // A sparse file, in one chunk: the memory used must not depend on its length.
    void hugeFileNeedsLittleMemory() {
        constexpr qint64 length = 300LL * 1024 * 1024;
        constexpr qint64 allowance = 16LL * 1024 * 1024;
        const auto source = file({});
        QVERIFY(source->resize(length));
        UploadServer server({announced(), created()});
        server.setDiscardsBodies(true);
        use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), source, "x/y", noChunking, {}));
        const qint64 before = peakMemory();
        begin();
        QVERIFY(fetcher_->waitForCompletionWithTimeout(std::chrono::seconds(90)));
        QVERIFY2(!error_, qPrintable(failure()));
        QCOMPARE(server.receivedBodyBytes(), length + 7);
        if (!isMemoryMeasurable)
            return;
        const qint64 growth = peakMemory() - before;
        QVERIFY2(before > 0 && growth < allowance, QByteArray::number(growth));
    }
};

} // namespace quenby

QTEST_GUILESS_MAIN(quenby::UploadLifecycleTest)
#include "tst_uploadlifecycle.moc"
