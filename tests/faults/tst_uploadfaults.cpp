// Uploads through every fault: each ends in one whole copy or one clear error, never in a hang, a wrong file or a
// second copy.

#include "tests/faults/FaultBench.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr qsizetype fileLength = 350000; // four chunks, the last one longer than the rest would be

const auto success = Expected::success();

Expected failure(const char* domain, qint64 code) { return {QString::fromLatin1(domain), code}; }

} // namespace

Q_DECLARE_METATYPE(Expected)

class UploadFaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { content_ = sampleBytes(fileLength); }
    void init() { QVERIFY2(bench_.prepare(), bench_.drive().log().constData()); }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    void upload_data() {
        QTest::addColumn<QByteArray>("faults");
        QTest::addColumn<Expected>("expected");
        const auto row = [](const char* name, const QByteArray& faults, const Expected& expected) {
            QTest::newRow(name) << faults << expected;
        };
        const auto announcing = [&row](const char* name, const QByteArray& action, const Expected& expected,
                                       int times = 1) {
            row(name,
                R"([{"match": {"pathPrefix": "/upload", "method": "POST", "times": )" + QByteArray::number(times) +
                    R"(}, "action": )" + action + "}]",
                expected);
        };
        const auto sending = [&row](const char* name, const QByteArray& action, const Expected& expected, int times = 1,
                                    int nth = 1) {
            row(name,
                R"([{"match": {"uploadPut": true, "times": )" + QByteArray::number(times) + R"(, "nth": )" +
                    QByteArray::number(nth) + R"(}, "action": )" + action + "}]",
                expected);
        };
        row("no fault", "[]", success);

        announcing("announcement reset", R"({"reset": "before"})", success);
        announcing("announcement's reply lost", R"({"drop": {"afterResponseBytes": 0}})", success);
        announcing("announcement stalls", R"({"stall": {"where": "before", "seconds": 30}})", success);
        announcing("announcement answered with a body", R"({"firstReplyBody": "surprise"})",
                   failure("HTTPStatus", 501));
        announcing("announcement without a location", R"({"headers": {"Location": ""}})", failure("HTTPStatus", 501));
        announcing("announcement 401 once", R"({"expireAccessToken": true})", success);
        announcing("announcement 403, quota",
                   R"({"status": 403, "contentType": "application/json", "body": {"error": {"code": 403,
                       "message": "The quota is used up", "data": [{"reason": "quotaExceeded"}]}}})",
                   failure("GTLJSONRPCErrorDomain", 403));
        announcing("announcement 403, rate",
                   R"({"status": 403, "contentType": "application/json", "body": {"error": {"code": 403,
                       "message": "Slow down", "data": [{"reason": "userRateLimitExceeded"}]}}})",
                   success);
        // There the first road's end is met, and the upload goes over: the second one has no fault.
        const bool isOnFirstRoad = bench_.drive().startsWithRpc();
        announcing("announcement 404", R"({"status": 404})", isOnFirstRoad ? success : failure("HTTPStatus", 404));
        announcing("announcement 410", R"({"status": 410})", isOnFirstRoad ? success : failure("HTTPStatus", 410));
        announcing("announcement redirected for ever",
                   isOnFirstRoad
                       ? R"({"redirect": {"url": "/upload/rpc?uploadType=resumable", "status": 307}})"
                       : R"({"redirect": {"url": "/upload/drive/v2/files?uploadType=resumable", "status": 307}})",
                   failure("URLErrorDomain", -1007), -1);

        for (const int status : {408, 429, 500, 502, 503, 504}) {
            const QByteArray action = R"({"status": )" + QByteArray::number(status) + '}';
            announcing(qPrintable(QStringLiteral("announcement %1").arg(status)), action, success);
            sending(qPrintable(QStringLiteral("chunk %1").arg(status)), action, success);
        }
        sending("chunk 503 with Retry-After", R"({"status": 503, "headers": {"Retry-After": "2"}})", success);
        sending("chunk 503 for ever", R"({"status": 503})", failure("HTTPStatus", 503), -1);
        sending("chunk 403 for good", R"({"status": 403})", failure("HTTPStatus", 403));
        sending("chunk refused: token expired in the middle",
                R"({"expireAccessToken": true, "status": 401, "headers": {"WWW-Authenticate": "Bearer"}})", success);

        sending("chunk reset after N bytes", R"({"reset": {"afterRequestBytes": 30000}})", success);
        sending("chunk cut after N bytes", R"({"drop": {"afterRequestBytes": 30000}})", success);
        sending("chunk stalls", R"({"stall": {"where": {"afterRequestBytes": 30000}, "seconds": 30}})", success);
        sending("reply to a chunk lost", R"({"drop": {"afterResponseBytes": 0}})", success);
        sending("reply to a chunk cut in its head", R"({"reset": {"afterResponseBytes": 10}})", success);
        sending("every second chunk reset", R"({"reset": {"afterRequestBytes": 50000}})", success, 3, 0);

        sending("Range missing once", R"({"range": "missing"})", success, 1, 0);
        sending("Range malformed once", R"({"range": "malformed"})", success, 1, 0);
        sending("Range backward once", R"({"range": "backward"})", success, 1, 0);
        sending("Range too far once", R"({"range": "bytes=0-999999999"})", success, 1, 0);
        sending("Range too far for ever", R"({"range": "bytes=0-999999999"})", failure("GTMHTTPFetcher", -3), -1, 0);
        sending("Range missing for ever", R"({"range": "missing"})", failure("GTMHTTPFetcher", -3), -1, 0);
        sending("Range beyond what was sent", R"({"range": "tooFar"})", success, 1, 0);

        sending("session lost in the middle", R"({"loseSession": true})", success);
        sending("session lost again and again", R"({"loseSession": true})", failure("GTLJSONRPCErrorDomain", 404), -1);
        sending("location changed in the middle", R"({"changeLocation": true})", success);

        // The third chunk is the last: the file is stored, the news of it is lost.
        sending("final reply lost", R"({"drop": {"afterResponseBytes": 0}})", success, 1, 2);
        sending("final reply lost, 503 after commit", R"({"status": 503, "commitFirst": true})", success, 1, 2);
        sending("final reply truncated", R"({"truncateBody": 40})", success, 1, 2);
    }
    void upload() {
        QFETCH(QByteArray, faults);
        QFETCH(Expected, expected);
        const QString title = QString::fromLatin1(QTest::currentDataTag());
        const QByteArray path = bench_.makeFile(title.toUtf8().replace('/', '-'), content_);
        QVERIFY(bench_.drive().orderFaults(faults));

        const auto outcome = bench_.upload(path);
        const QString difference = expected.differenceTo(outcome ? MaybeError() : outcome.error());
        QVERIFY2(difference.isEmpty(), qPrintable(difference));

        // A failed upload may leave nothing behind; one that succeeded exactly one copy, and a right one.
        const QStringList copies = bench_.copiesOf(title);
        QCOMPARE(copies, outcome ? QStringList{md5Of(content_)} : QStringList{});
        if (outcome)
            QCOMPARE(outcome->md5, md5Of(content_));
    }

    void driveKilledInTheMiddle() {
        const QByteArray path = bench_.makeFile("killed", content_);
        bool killed = false;
        const auto outcome = bench_.upload(path, [this, &killed](qint64 sent) {
            if (sent < 150000 || std::exchange(killed, true))
                return;
            bench_.drive().kill();
            QVERIFY2(bench_.drive().start(), bench_.drive().log().constData());
        });
        QVERIFY(killed);
        QVERIFY2(outcome.ok(), outcome ? "" : qPrintable(outcome.error().description()));
        QCOMPARE(bench_.copiesOf(QStringLiteral("killed")), QStringList{md5Of(content_)});
        // Only the piece that was on its way may have been sent twice.
        QVERIFY(bench_.duplicateBytes() <= 250000);
    }

    void nobodyListens() {
        const QByteArray path = bench_.makeFile("refused", content_);
        bench_.drive().kill();
        const auto outcome = bench_.upload(path);
        QVERIFY(!outcome);
        QVERIFY2(outcome.error().is(URLErrorCode::cannotConnectToHost), qPrintable(outcome.error().description()));
        QVERIFY(bench_.drive().start());
        QCOMPARE(bench_.copiesOf(QStringLiteral("refused")), QStringList());
    }

private:
    QByteArray content_;
    FaultBench bench_;
};

QTEST_GUILESS_MAIN(UploadFaultsTest)
#include "tst_uploadfaults.moc"
