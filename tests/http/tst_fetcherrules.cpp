// What a fetcher does by itself: authorization, redirects, cookies, conditions, downloads.
#include "http/GTMCookieStorage.h"
#include "http/GTMHTTPFetchHistory.h"
#include "tests/http/FetcherBench.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

using Bench = FetcherBench;

namespace {

class RecordingLogger final : public FetchLogger {
public:
    std::vector<FetchRecord> records;

    std::shared_ptr<QIODevice> willSendStream(const std::shared_ptr<QIODevice>& stream) override { return stream; }
    void attemptDidEnd(const FetchRecord& record) override { records.push_back(record); }
};

} // namespace

class FetcherRulesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { silenceExpectedErrors(); }

    // --- Logging --------------------------------------------------------------------------------------------------

    void logsWhatWasDeferredOnce_data() {
        QTest::addColumn<bool>("clears");
        QTest::newRow("when the flag is cleared") << true;
        QTest::newRow("when the fetcher goes") << false;
    }
    void logsWhatWasDeferredOnce() {
        QFETCH(bool, clears);
        Bench bench;
        const auto logger = std::make_shared<RecordingLogger>();
        bench.fetcher->setLogger(logger);
        bench.fetcher->setShouldDeferResponseBodyLogging(true);
        bench.fetch(200, "body");
        QCOMPARE(bench.calls, 1);
        QVERIFY(logger->records.empty());
        if (clears)
            bench.fetcher->setShouldDeferResponseBodyLogging(false);
        else
            bench.fetcher.reset();
        QCOMPARE(logger->records.size(), 1U);
        QCOMPARE(logger->records.front().responseBody, "body");
        bench.fetcher.reset();
        QCOMPARE(logger->records.size(), 1U);
    }

    // --- Authorization --------------------------------------------------------------------------------------------

    void authorizesFirst() {
        Bench bench;
        const auto authorizer = std::make_shared<FakeAuthorizer>();
        bench.fetcher->setAuthorizer(authorizer);
        QVERIFY(bench.begin());
        QCOMPARE(bench.attempts(), 0U);
        settle();
        QCOMPARE(bench.network.last().request.headers.value("Authorization"), "Bearer token0");
        bench.network.last().answer(200);
        QVERIFY(!bench.fetcher->authorizer());
    }

    void authorizationFails() {
        Bench bench;
        const auto authorizer = std::make_shared<FakeAuthorizer>();
        authorizer->error = Error(errorDomain::oauth2, -1001);
        bench.fetcher->setAuthorizer(authorizer);
        QVERIFY(bench.begin());
        QTRY_COMPARE(bench.calls, 1);
        QVERIFY(bench.error->is(errorDomain::oauth2, -1001));
        QCOMPARE(bench.attempts(), 0U);
    }

    // The first refusal leads to a new token even with retry disabled, the second is final.
    void refreshesOnce_data() {
        QTest::addColumn<bool>("canRefresh");
        QTest::addColumn<int>("attempts");
        QTest::newRow("it can") << true << 2;
        QTest::newRow("it cannot") << false << 1;
    }
    void refreshesOnce() {
        QFETCH(bool, canRefresh);
        QFETCH(int, attempts);
        Bench bench;
        const auto authorizer = std::make_shared<FakeAuthorizer>();
        authorizer->canRefresh = canRefresh;
        bench.fetcher->setAuthorizer(authorizer);
        bench.begin();
        for (int i = 0; i < attempts; ++i) {
            settle();
            QCOMPARE(bench.network.last().request.headers.value("Authorization"),
                     "Bearer token" + QByteArray::number(i));
            bench.network.last().answer(401, "no");
            bench.time->advance(0ms);
        }
        settle();
        QCOMPARE(int(bench.attempts()), attempts);
        QVERIFY(bench.error->isHTTPStatus(401));
        QCOMPARE(bench.calls, 1);
    }

    void challenges() {
        Bench bench;
        bench.fetcher->setCredential({u"user"_s, u"word"_s});
        bench.begin();
        AuthenticationChallenge challenge;
        challenge.host = u"host.example"_s;
        auto& exchange = bench.network.last();
        challenge.isProxy = true;
        QVERIFY(!exchange.challenge(challenge)); // the credential is not for proxies
        challenge.isProxy = false;
        for (; challenge.previousFailureCount < 3; ++challenge.previousFailureCount)
            QCOMPARE(exchange.challenge(challenge)->user, u"user"_s);
        QVERIFY(!exchange.challenge(challenge));
        exchange.fail(Error(URLErrorCode::cancelled));
        settle();
        QVERIFY(bench.error->is(FetcherErrorCode::authenticationChallengeFailed));
        const auto kept = bench.error->detail(errorKey::challenge).value<AuthenticationChallenge>();
        QCOMPARE(kept.previousFailureCount, 3);
    }

    // --- Redirects ------------------------------------------------------------------------------------------------

    void redirects_data() {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("becomes");
        QTest::addColumn<bool>("keepsAuthorization");
        const auto row = [](const char* from, const char* to, const char* becomes, bool keeps) {
            QTest::addRow("%s to %s", from, to)
                << QString::fromLatin1(from) << QString::fromLatin1(to) << QString::fromLatin1(becomes) << keeps;
        };
        row("http://a.example/", "https://a.example/x", "https://a.example/x", true);
        row("https://a.example/", "http://a.example/x?y", "https://a.example/x?y", true);
        row("https://a.example/", "ftp://a.example/x", "https://a.example/x", true);
        row("https://a.example/", "https://A.EXAMPLE/x", "https://a.example/x", true);
        row("https://a.example/", "https://b.example/x", "https://b.example/x", false);
        row("https://a.example/", "https://x.a.example/", "https://x.a.example/", false);
    }
    void redirects() {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, becomes);
        QFETCH(bool, keepsAuthorization);
        Bench bench(from);
        bench.fetcher->setAllowedInsecureSchemes({u"http"_s});
        bench.fetcher->setCookieStorageMethod(CookieStorageMethod::fetchHistory);
        bench.fetcher->setFetchHistory(std::make_shared<GTMHTTPFetchHistory>(bench.time));
        HeaderFields& headers = bench.fetcher->mutableRequest().headers;
        headers.set("Authorization", "Bearer token");
        headers.set("Cookie", "mine=1");
        headers.set("X-Own", "kept");
        bench.begin();
        const auto next = bench.network.last().redirect(URLRequest(QUrl(to)), fields({{"Set-Cookie", "s=2"}}));
        QVERIFY(next);
        QCOMPARE(next->url.toString(), becomes);
        QCOMPARE(next->headers.value("X-Own"), "kept");
        QCOMPARE(next->headers.contains("Authorization"), keepsAuthorization);
        QCOMPARE(next->headers.value("Cookie"), QByteArray(keepsAuthorization ? "mine=1; s=2" : ""));
        QCOMPARE(bench.fetcher->request().url.toString(), becomes);
    }

    // The authorizer would give the token to whomever the redirect names.
    void noTokenForAnotherHostByWayOfARetry() {
        Bench bench;
        const auto authorizer = std::make_shared<FakeAuthorizer>();
        authorizer->canRefresh = true;
        bench.fetcher->setAuthorizer(authorizer);
        bench.fetcher->setRetryEnabled(true);
        bench.begin();
        settle();
        bench.network.last().redirect(URLRequest(QUrl(u"https://other.example/"_s)));
        bench.network.last().answer(503);
        bench.time->advance(2s);
        settle();
        QCOMPARE(bench.attempts(), 2U);
        QCOMPARE(bench.network.last().request.url.host(), u"other.example"_s);
        QVERIFY(!bench.network.last().request.headers.contains("Authorization"));
        bench.answer(401);
        QVERIFY(bench.error->isHTTPStatus(401));
        QCOMPARE(authorizer->primed, 0);
    }

    // --- Cookies and conditions -----------------------------------------------------------------------------------

    void cookiesByMethod_data() {
        QTest::addColumn<int>("method");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("none") << -1 << QByteArray("own=1");
        QTest::newRow("any other number") << 7 << QByteArray("own=1");
        QTest::newRow("system") << 2 << QByteArray("own=1");
        QTest::newRow("static") << 0 << QByteArray("own=1; kept=2");
        QTest::newRow("history") << 1 << QByteArray("own=1; kept=2");
    }
    void cookiesByMethod() {
        QFETCH(int, method);
        GTMHTTPFetcher::staticCookieStorage()->removeAllCookies();
        Bench bench;
        bench.fetcher->setFetchHistory(std::make_shared<GTMHTTPFetchHistory>(bench.time));
        bench.fetcher->setCookieStorageMethod(CookieStorageMethod(method));
        bench.fetcher->setRetryEnabled(true);
        bench.fetcher->mutableRequest().headers.set("Cookie", "own=1");
        bench.begin();
        QCOMPARE(bench.network.last().request.shouldHandleCookies, method == 2);
        for (int i = 0; i < 2; ++i) { // a second retry must not send a cookie twice
            bench.network.last().answer(503, {}, fields({{"Set-Cookie", "kept=2; Path=/"}}));
            bench.time->advance(bench.time->nextDelay());
            QTEST(bench.network.last().request.headers.value("Cookie"), "sent");
        }
    }

    void rememberedDataAnswersA304_data() {
        QTest::addColumn<bool>("caches");
        QTest::addColumn<bool>("toFile");
        QTest::newRow("with data") << true << false;
        QTest::newRow("with data, to a file") << true << true;
        QTest::newRow("ETags alone") << false << false;
    }
    void rememberedDataAnswersA304() {
        QFETCH(bool, caches);
        QFETCH(bool, toFile);
        QTemporaryDir folder;
        Bench bench;
        const auto history = std::make_shared<GTMHTTPFetchHistory>(bench.time);
        history->setShouldRememberETags(true);
        history->setShouldCacheETaggedData(caches);
        bench.fetcher->setFetchHistory(history);
        bench.fetch(200, "remembered", fields({{"ETag", "\"1\""}}));
        if (toFile)
            bench.fetcher->setDownloadPath(folder.filePath(u"file"_s));
        bench.fetcher->setRetryEnabled(true);
        bench.begin();
        bench.network.last().fail(Error(URLErrorCode::timedOut)); // the condition survives a retry
        bench.time->advance(bench.time->nextDelay());
        QCOMPARE(bench.network.last().request.headers.value("If-None-Match"), "\"1\"");
        bench.answer(304);
        if (!caches) {
            QVERIFY(bench.error->isHTTPStatus(304)); // the caller has the data, or nobody has
            return;
        }
        QVERIFY(!bench.error);
        QCOMPARE(bench.fetcher->statusCode(), 200);
        QFile file(folder.filePath(u"file"_s));
        QCOMPARE(file.open(QIODevice::ReadOnly), toFile);
        QCOMPARE(toFile ? file.readAll() : bench.data, "remembered");
    }

    // --- Downloads ------------------------------------------------------------------------------------------------

    void downloads_data() {
        QTest::addColumn<int>("status"); // 0: the connection is lost half way, -1: stopped
        QTest::newRow("whole") << 200;
        QTest::newRow("an error") << 404;
        QTest::newRow("lost half way") << 0;
        QTest::newRow("stopped") << -1;
    }
    void downloads() {
        QFETCH(int, status);
        QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        Bench bench;
        bench.fetcher->setDownloadPath(path);
        QVERIFY(bench.begin());
        const QString temporary = bench.fetcher->temporaryDownloadPath();
        QVERIFY(QFileInfo(temporary).fileName().startsWith(u"gtmhttpfetcher_"_s));
        QCOMPARE(QFileInfo(temporary).path(), folder.path());
        auto& exchange = bench.network.last();
        exchange.receiveHead(status > 0 ? status : 200);
        exchange.receiveData("new");
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), "old"); // until the new one is whole
        if (status > 0)
            exchange.finish();
        else if (status == 0)
            exchange.fail(Error(URLErrorCode::networkConnectionLost));
        else
            bench.fetcher->stopFetching();
        settle();
        QFile now(path);
        QVERIFY(now.open(QIODevice::ReadOnly));
        QCOMPARE(now.readAll(), QByteArray(status == 200 ? "new" : "old"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1); // no temporary file stays
        QVERIFY(bench.data.isNull() == (status != 404));
        QCOMPARE(bench.error.has_value(), status == 404 || status == 0);
        if (status == 404)
            QCOMPARE(bench.error->detail(errorKey::data).toByteArray(), "new");
    }

    void downloadsThatCannotBeMoved() {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"taken"_s);
        QVERIFY(QDir(path).mkpath(u"by/a/folder"_s));
        Bench bench;
        bench.fetcher->setDownloadPath(path);
        bench.fetch(200, "new");
        QCOMPARE(bench.error->domain(), errorDomain::posix);
        QVERIFY(bench.error->description().contains(path));
        QVERIFY(QFileInfo(path).isDir());
    }

    void fullDisks() {
        QTemporaryDir folder;
        Bench bench;
        bench.fetcher->setDownloadPath(folder.filePath(u"file"_s));
        bench.begin();
        bench.network.last().receiveHead(200);
        // A limit of the file's size stands for the disk's.
        const auto before = std::signal(SIGXFSZ, SIG_IGN);
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        rlimit small = old;
        small.rlim_cur = 1000;
        setrlimit(RLIMIT_FSIZE, &small);
        bench.network.last().receiveData(QByteArray(600, 'a'));
        bench.network.last().receiveData(QByteArray(600, 'b')); // 400 of them fit
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, before);
        settle();
        QVERIFY(bench.error && bench.error->is(errorDomain::httpStatus, fileHandleErrorCode));
        QVERIFY2(bench.error->description().contains(folder.filePath(u"file"_s)) &&
                     bench.error->description().contains(qt_error_string(EFBIG)),
                 qPrintable(bench.error->description()));
        QVERIFY(QDir(folder.path()).isEmpty());
    }
};

QTEST_GUILESS_MAIN(FetcherRulesTest)
#include "tst_fetcherrules.moc"
