// Calls and downloads through every fault: each ends in the right answer, the right file, or one clear error.

#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveFile.h"
#include "tests/faults/FaultBench.h"

#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

const auto success = Expected::success();

Expected failure(const char* domain, qint64 code) { return {QString::fromLatin1(domain), code}; }

// The longest file that this process may write, as a full disk would have it.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit{bytes, former_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &former_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit former_{};
};

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

Q_DECLARE_METATYPE(Expected)

class CallFaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        content_ = sampleBytes(300000);
        QVERIFY2(bench_.prepare(), bench_.drive().log().constData());
        const auto stored = bench_.upload(bench_.makeFile("stored", content_));
        QVERIFY(stored.ok());
        identifier_ = stored->identifier;
    }
    void init() { QVERIFY2(bench_.prepare(), bench_.drive().log().constData()); }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    void call_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<int>("times");
        QTest::addColumn<Expected>("expected");
        const auto row = [](const char* name, const char* action, const Expected& expected, int times = 1) {
            QTest::newRow(name) << QByteArray(action) << times << expected;
        };
        // There the first road's end is met, and the call goes over: the second one has no fault.
        const bool isOnFirstRoad = bench_.drive().startsWithRpc();
        const auto lost = [&](const Expected& otherwise) { return isOnFirstRoad ? success : otherwise; };
        row("reset before the call", R"({"reset": "before"})", success);
        row("reset in the reply", R"({"reset": {"afterResponseBytes": 200}})", success);
        row("cut in the reply", R"({"drop": {"afterResponseBytes": 200}})", success);
        row("stall in the reply", R"({"stall": {"where": {"afterResponseBytes": 200}, "seconds": 30}})", success);
        row("stalls for ever", R"({"stall": {"where": "before", "seconds": 30}})", failure("URLErrorDomain", -1001),
            -1);
        row("reply drips", R"({"dripBytesPerSecond": 4000})", success);
        row("truncated, but the length is right", R"({"malformedJson": true})", failure("JSONErrorDomain", 3840));
        row("truncated body", R"({"truncateBody": 50})", success);
        row("no JSON at all", R"({"status": 200, "contentType": "text/html", "body": "<html>Welcome</html>"})",
            failure("GTLServiceDomain", -3002));
        row("JSON said to be text", R"({"contentType": "text/plain"})", success);
        row("empty reply", R"({"status": 200, "contentType": "application/json", "body": ""})",
            failure("GTLServiceDomain", -3002));
        row("401 once", R"({"expireAccessToken": true})", success);
        row("401 for ever", R"({"status": 401, "headers": {"WWW-Authenticate": "Bearer"}})", failure("HTTPStatus", 401),
            -1);
        row("refresh token refused", R"({"revokeRefreshToken": true})", failure("HTTPStatus", 400));
        row("403", R"({"status": 403})", failure("HTTPStatus", 403));
        row("404", R"({"status": 404})", lost(failure("HTTPStatus", 404)));
        row("408", R"({"status": 408})", success);
        row("410", R"({"status": 410})", lost(failure("HTTPStatus", 410)));
        row("429", R"({"status": 429})", failure("HTTPStatus", 429));
        row("500", R"({"status": 500})", failure("HTTPStatus", 500));
        row("502", R"({"status": 502})", failure("HTTPStatus", 502));
        row("503", R"({"status": 503})", success);
        row("503 with Retry-After", R"({"status": 503, "headers": {"Retry-After": "2"}})", success);
        row("503 with an absurd Retry-After", R"({"status": 503, "headers": {"Retry-After": "999999"}})", success);
        row("503 for ever", R"({"status": 503})", failure("HTTPStatus", 503), -1);
        row("504", R"({"status": 504})", success);
        row("404 with a JSON body",
            R"({"status": 404, "contentType": "application/json",
                "body": {"id": "x", "error": {"code": 404, "message": "File not found"}}})",
            failure("GTLJSONRPCErrorDomain", 404));
        const QByteArray redirect = isOnFirstRoad ? R"({"redirect": {"url": "/rpc?prettyPrint=false", "status": 307}})"
                                                  : R"({"redirect": {"url": "/drive/v2/changes", "status": 307}})";
        row("redirected once", redirect, success);
        row("redirected for ever", redirect, failure("URLErrorDomain", -1007), -1);
        row("server's clock is a day ahead", R"({"clockSkewSeconds": 86400})", success);
    }
    void call() {
        QFETCH(QByteArray, action);
        QFETCH(int, times);
        QFETCH(Expected, expected);
        QVERIFY(bench_.drive().orderFaults(R"([{"match": {"pathPrefix": "/rpc", "times": )" +
                                           QByteArray::number(times) + R"(}, "action": )" + action + "}]"));
        const auto query = GTLQueryDrive::queryForChangesList();
        query->setIncludeDeleted(true);
        const auto reply = bench_.call(query);
        const QString difference = expected.differenceTo(reply ? MaybeError() : reply.error());
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        if (reply) {
            const auto changes = std::dynamic_pointer_cast<GTLDriveChangeList>(*reply);
            QVERIFY(changes && changes->itemAtIndex(0));
        }
    }

    void download_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<int>("times");
        QTest::addColumn<Expected>("expected");
        const auto row = [](const char* name, const char* action, const Expected& expected, int times = 1) {
            QTest::newRow(name) << QByteArray(action) << times << expected;
        };
        row("no fault", R"({})", success, 0);
        row("reset after N bytes", R"({"reset": {"afterResponseBytes": 100000}})", success);
        row("cut after N bytes", R"({"drop": {"afterResponseBytes": 100000}})", success);
        row("truncated", R"({"truncateBody": 1000})", success);
        row("truncated for ever", R"({"truncateBody": 1000})", failure("URLErrorDomain", -1005), -1);
        row("stall after N bytes", R"({"stall": {"where": {"afterResponseBytes": 100000}, "seconds": 30}})", success);
        row("401 once", R"({"expireAccessToken": true})", success);
        row("404", R"({"status": 404, "body": "gone"})", failure("HTTPStatus", 404));
        row("503", R"({"status": 503, "bodyBytes": 5000})", success);
        row("redirected to another scheme", R"({"redirect": {"url": "ftp://127.0.0.1:1/", "status": 302}})",
            failure("URLErrorDomain", -1004)); // the scheme stays, and nobody listens at that port
    }
    void download() {
        QFETCH(QByteArray, action);
        QFETCH(int, times);
        QFETCH(Expected, expected);
        QVERIFY(bench_.drive().orderFaults(R"([{"match": {"pathPrefix": "/drive/v2/files", "times": )" +
                                           QByteArray::number(times) + R"(}, "action": )" + action + "}]"));
        const QString destination = QFile::decodeName(bench_.makeFile("destination", "what was there before"));
        const auto error = bench_.download(identifier_, destination);
        const QString difference = expected.differenceTo(error);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        QVERIFY(contentsOf(destination) == (error ? QByteArray("what was there before") : content_));
        // No half of a file stays behind under any name.
        const QFileInfo info(destination);
        QCOMPARE(info.dir().entryList({QStringLiteral("*gtmhttpfetcher*")}, QDir::AllEntries | QDir::Hidden),
                 QStringList());
    }

    void fullDisk() {
        const QString destination = QFile::decodeName(bench_.makeFile("destination", "before"));
        const FileSizeLimit limit(100000);
        const auto error = bench_.download(identifier_, destination);
        QVERIFY(error);
        QVERIFY2(error->isHTTPStatus(fileHandleErrorCode), qPrintable(error->description()));
        QCOMPARE(contentsOf(destination), QByteArray("before"));
    }

private:
    QByteArray content_;
    QString identifier_;
    FaultBench bench_;
};

QTEST_GUILESS_MAIN(CallFaultsTest)
#include "tst_callfaults.moc"
