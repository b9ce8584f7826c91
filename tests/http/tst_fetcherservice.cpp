#include "http/GTMHTTPFetchHistory.h"
#include "http/GTMHTTPFetcherService.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QLoggingCategory>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

struct Bench {
    FakeNetwork network;
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    std::shared_ptr<GTMHTTPFetcherService> service = GTMHTTPFetcherService::create(time);
    QObject context;
    int calls = 0;
    int errors = 0;

    Bench() { service->setConnectionClass(network.factory()); }
    ~Bench() {
        if (service)
            service->stopAllFetchers();
    }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    std::shared_ptr<GTMHTTPFetcher> begin(const QString& url, int priority = 0) {
        const auto fetcher = service->fetcherWithRequest(URLRequest(QUrl(url)));
        fetcher->setServicePriority(priority);
        fetcher->beginFetchWithCompletionHandler(&context, [this](const QByteArray&, const MaybeError& error) {
            ++calls;
            errors += error ? 1 : 0;
        });
        return fetcher;
    }
    void answer(int status) {
        network.last().answer(status);
        settle();
    }
    QStringList asked() const {
        QStringList paths;
        for (const auto& exchange : network.exchanges)
            paths << exchange->request.url.path();
        return paths;
    }
};

QString onHost(const QString& path) { return u"https://one.example/"_s + path; }

} // namespace

class FetcherServiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules(u"quenby.http*=false"_s); }

    void settingsReachFetchers() {
        Bench bench;
        QObject queue;
        bench.service->setUserAgent("Agent/1");
        bench.service->setTimeout(7s);
        bench.service->setAllowedInsecureSchemes({u"http"_s});
        bench.service->setAllowLocalhostRequest(true);
        bench.service->setDelegateQueue(&queue);
        const auto fetcher = bench.service->fetcherWithRequest(URLRequest(QUrl(onHost(u"a"_s))));
        QCOMPARE(fetcher->request().headers.value("User-Agent"), "Agent/1");
        QCOMPARE(fetcher->request().timeout, std::chrono::milliseconds(7s));
        QCOMPARE(fetcher->allowedInsecureSchemes(), QStringList{u"http"_s});
        QVERIFY(fetcher->allowLocalhostRequest());
        QCOMPARE(fetcher->delegateQueue(), &queue);
        QCOMPARE(fetcher->cookieStorageMethod(), CookieStorageMethod::fetchHistory);

        // Shared until one of them is changed: from then on it is that one's alone.
        const auto sibling = bench.service->fetcherWithRequest(URLRequest(QUrl(onHost(u"a"_s))));
        fetcher->setAllowedInsecureSchemes({u"file"_s});
        bench.service->setAllowLocalhostRequest(false);
        QCOMPARE(sibling->allowedInsecureSchemes(), QStringList{u"http"_s});
        QVERIFY(sibling->allowLocalhostRequest());
        const auto later = bench.service->fetcherWithRequest(URLRequest(QUrl(onHost(u"a"_s))));
        QCOMPARE(later->allowedInsecureSchemes(), QStringList{u"http"_s});
        QVERIFY(!later->allowLocalhostRequest());

        URLRequest own(QUrl(onHost(u"b"_s)));
        own.headers.set("User-Agent", "Own/1");
        own.timeout = 3s;
        bench.service->setTimeout(0s);
        const auto other = bench.service->fetcherWithRequest(own);
        QCOMPARE(other->request().headers.value("User-Agent"), "Own/1");
        QCOMPARE(other->request().timeout, std::chrono::milliseconds(3s));
    }

    void theEleventhWaits() {
        Bench bench;
        std::vector<std::shared_ptr<GTMHTTPFetcher>> fetchers;
        for (int i = 0; i < 11; ++i)
            fetchers.push_back(bench.begin(onHost(QString::number(i))));
        QCOMPARE(bench.network.exchanges.size(), 10U);
        QVERIFY(fetchers[10]->isFetching());
        QVERIFY(bench.service->isDelayingFetcher(*fetchers[10]));
        QVERIFY(!bench.service->isDelayingFetcher(*fetchers[9]));
        QCOMPARE(bench.service->numberOfFetchers(), 11U);
        QCOMPARE(bench.service->numberOfRunningFetchers(), 10U);
        QCOMPARE(bench.service->numberOfDelayedFetchers(), 1U);
        QCOMPARE(bench.service->issuedFetchersWithRequestURL(QUrl(onHost(u"10"_s))), std::vector{fetchers[10]});

        bench.begin(u"https://two.example/"_s); // another host does not care
        QCOMPARE(bench.network.exchanges.size(), 11U);
        fetchers[3]->stopFetching();
        settle();
        QCOMPARE(bench.network.exchanges.size(), 12U);
        QCOMPARE(bench.asked().last(), u"/10"_s);
    }

    void priorities() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        bench.begin(onHost(u"running"_s));
        bench.begin(onHost(u"late"_s), 5);
        bench.begin(onHost(u"first"_s), 1);
        bench.begin(onHost(u"second"_s), 1);
        for (int i = 0; i < 4; ++i) {
            bench.answer(200);
        }
        QCOMPARE(bench.asked(), (QStringList{u"/running"_s, u"/first"_s, u"/second"_s, u"/late"_s}));
        QCOMPARE(bench.calls, 4);
        QCOMPARE(bench.service->numberOfFetchers(), 0U);
    }

    // Whoever leaves the queue, from between two others or as the only one of a priority, leaves them in their order.
    void waitingFetchersMayLeave() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        bench.begin(onHost(u"running"_s));
        bench.begin(onHost(u"b"_s), 1);
        const auto between = bench.begin(onHost(u"gone"_s), 1);
        bench.begin(onHost(u"c"_s), 1);
        const auto only = bench.begin(onHost(u"gone"_s), -1);
        bench.begin(onHost(u"a"_s), 0);
        between->stopFetching();
        only->stopFetching();
        QVERIFY(bench.service->issuedFetchersWithRequestURL(QUrl(onHost(u"gone"_s))).empty());
        for (size_t waiting = 3; waiting > 0; --waiting) {
            QCOMPARE(bench.service->numberOfDelayedFetchers(), waiting);
            bench.answer(200);
        }
        QCOMPARE(bench.asked(), (QStringList{u"/running"_s, u"/a"_s, u"/b"_s, u"/c"_s}));
        QCOMPARE(bench.service->numberOfFetchers(), 1U);
    }

    // Waiting to retry keeps a fetcher's place; beginning again takes the queue's end.
    void retriesQueueUpAgain() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        const auto first = bench.service->fetcherWithRequest(URLRequest(QUrl(onHost(u"first"_s))));
        first->setRetryEnabled(true);
        first->beginFetchWithCompletionHandler(&bench.context, [](const QByteArray&, const MaybeError&) {});
        bench.begin(onHost(u"second"_s));
        bench.answer(503);
        QCOMPARE(bench.network.exchanges.size(), 1U);
        bench.time->advance(2s);
        settle();
        QCOMPARE(bench.asked().last(), u"/second"_s);
        QVERIFY(bench.service->isDelayingFetcher(*first));
        bench.answer(200);
        QCOMPARE(bench.asked().last(), u"/first"_s);
    }

    void filesCountAsLocalhost() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        bench.service->setAllowLocalhostRequest(true);
        bench.service->setAllowedInsecureSchemes({u"file"_s});
        bench.begin(u"http://localhost/"_s);
        const auto file = bench.begin(u"file:///tmp/x"_s);
        QVERIFY(bench.service->isDelayingFetcher(*file));
    }

    void stopsAll() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(2);
        for (int i = 0; i < 100; ++i)
            bench.begin(onHost(QString::number(i)));
        bench.service->stopAllFetchers();
        settle();
        QCOMPARE(bench.service->numberOfFetchers(), 0U);
        QCOMPARE(bench.network.exchanges.size(), 2U);
        QVERIFY(bench.network.exchanges[0]->isCancelled);
        QCOMPARE(bench.calls, 0);
        QVERIFY(bench.service->waitForCompletionOfAllFetchersWithTimeout(0ms));
    }

    void waitsForAll() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        for (int i = 0; i < 3; ++i)
            bench.begin(onHost(QString::number(i)));
        QVERIFY(!bench.service->waitForCompletionOfAllFetchersWithTimeout(10ms));
        QTimer answers;
        connect(&answers, &QTimer::timeout, &bench.context, [&bench] { bench.network.last().answer(200); });
        answers.start(0);
        QVERIFY(bench.service->waitForCompletionOfAllFetchersWithTimeout(20s));
        QCOMPARE(bench.calls, 3);
    }

    // Two callbacks for one object are on their way; the first waits for the second from inside.
    void aCallbackMayWaitForAnother() {
        Bench bench;
        const auto second = bench.service->fetcherWithRequest(URLRequest(QUrl(onHost(u"b"_s))));
        bool hasWaited = false;
        const auto first = bench.service->fetcherWithRequest(URLRequest(QUrl(onHost(u"a"_s))));
        first->beginFetchWithCompletionHandler(&bench.context, [&](const QByteArray&, const MaybeError&) {
            QCOMPARE(bench.calls, 0);
            hasWaited = second->waitForCompletionWithTimeout(20s);
        });
        second->beginFetchWithCompletionHandler(&bench.context,
                                                [&bench](const QByteArray&, const MaybeError&) { ++bench.calls; });
        bench.network.exchanges[0]->answer(200);
        bench.network.exchanges[1]->answer(200);
        QTRY_VERIFY(hasWaited);
        QCOMPARE(bench.calls, 1);
    }

    // The last caller may let the service go; what waits in its queue still gets its turn.
    void theQueueOutlivesItsOwner() {
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        bench.begin(onHost(u"a"_s));
        bench.begin(onHost(u"b"_s));
        const std::weak_ptr<GTMHTTPFetcherService> weak = bench.service;
        bench.service.reset();
        bench.answer(200);
        bench.answer(200);
        QCOMPARE(bench.calls, 2);
        QVERIFY(weak.expired());
    }

    // Thousands of fetchers that cannot begin give their places on without calling into one another.
    void manyThatCannotBegin() {
        constexpr int count = 10000;
        Bench bench;
        bench.service->setMaxRunningFetchersPerHost(1);
        const auto first = bench.begin(onHost(u"first"_s));
        bench.network.refusesConnections = true;
        for (int i = 0; i < count; ++i)
            bench.begin(onHost(QString::number(i)));
        QCOMPARE(bench.service->numberOfDelayedFetchers(), size_t(count));
        bench.network.last().answer(200);
        QTRY_COMPARE_WITH_TIMEOUT(bench.calls, count + 1, 60000);
        QCOMPARE(bench.errors, count);
        QCOMPARE(bench.service->numberOfFetchers(), 0U);
    }

    // Fetchers of several threads share one service; each begins on its own thread, and all get through.
    void manyThreads() {
        constexpr int threads = 4;
        constexpr int each = 200;
        const auto service = GTMHTTPFetcherService::create();
        service->setMaxRunningFetchersPerHost(3);
        std::atomic<int> finished = 0;
        std::atomic<int> astray = 0;
        std::vector<std::unique_ptr<QThread>> running;
        for (int i = 0; i < threads; ++i) {
            running.emplace_back(QThread::create([&service, &finished, &astray] {
                FakeNetwork network;
                QEventLoop loop;
                QObject context;
                const auto connections = network.factory();
                for (int k = 0; k < each; ++k) {
                    const auto fetcher = service->fetcherWithRequest(URLRequest(QUrl(u"https://h.example/"_s)));
                    fetcher->setConnectionClass(
                        [&, home = QThread::currentThread()](const URLRequest& request, URLConnectionClient& client) {
                            if (QThread::currentThread() != home)
                                ++astray;
                            auto connection = connections(request, client);
                            QMetaObject::invokeMethod(
                                &context, [exchange = network.exchanges.back()] { exchange->answer(200); },
                                Qt::QueuedConnection);
                            return connection;
                        });
                    fetcher->beginFetchWithCompletionHandler(
                        &context, [&finished](const QByteArray&, const MaybeError&) { ++finished; });
                }
                loop.exec();
            }));
            running.back()->start();
        }
        QTRY_COMPARE_WITH_TIMEOUT(finished.load(), threads * each, 60000);
        for (const auto& thread : running) {
            thread->quit();
            QVERIFY(thread->wait(60000));
        }
        QCOMPARE(astray.load(), 0);
        QCOMPARE(service->numberOfFetchers(), 0U);
    }
};

QTEST_GUILESS_MAIN(FetcherServiceTest)
#include "tst_fetcherservice.moc"
