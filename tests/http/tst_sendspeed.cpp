// Uploads that may not go out as fast as they could. Against one without a limit: no time is measured.
#include "tests/http/UploadTest.h"

namespace quenby {

using namespace testing;

namespace {

constexpr qint64 length = 64LL * 1024 * 1024; // more than the kernel keeps on the way
constexpr qint64 limit = 100'000;             // bytes per second: ten minutes for all of it

} // namespace

class SendSpeedTest : public testing::UploadTest {
    Q_OBJECT

private Q_SLOTS:
    void init() { reset(); }

    void limitHoldsUntilItIsLifted_data() {
        QTest::addColumn<bool>("isLate");
        QTest::newRow("from the start") << false;
        QTest::newRow("while it is sent") << true;
    }

    void limitHoldsUntilItIsLifted() {
        QFETCH(bool, isLate);
        const auto source = file({});
        QVERIFY(source->resize(length));
        UploadServer server;
        server.setDiscardsBodies(true);
        server.setHandler(
            [](const ReceivedRequest& request) { return request.method == "POST" ? announced() : created(); });

        GTMHTTPUploadFetcher& slow =
            use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), source, "x/y", noChunking, {}));
        qint64 slowSent = 0;
        if (!isLate)
            slow.setMaxSendSpeed(limit);
        slow.setSentDataBlock([&](qint64, qint64 sent, qint64) {
            slowSent = sent;
            if (isLate && sent > 7)
                slow.setMaxSendSpeed(limit);
        });
        begin();
        QTRY_VERIFY(slowSent > 7); // beyond the announcement

        const auto free =
            GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), source, "x/y", noChunking, {});
        free->setAllowLocalhostRequest(true);
        bool isFreeDone = false;
        free->beginFetchWithCompletionHandler(
            this, [&isFreeDone](const QByteArray&, const MaybeError& error) { isFreeDone = !error; });
        QVERIFY(free->waitForCompletionWithTimeout(std::chrono::seconds(60)) && isFreeDone);
        QVERIFY2(callbacks_ == 0 && slowSent < length / 2, QByteArray::number(slowSent));

        slow.setSentDataBlock(nullptr);
        slow.setMaxSendSpeed(0);
        QVERIFY(fetcher_->waitForCompletionWithTimeout(std::chrono::seconds(60)));
        QVERIFY2(callbacks_ == 1 && !error_, qPrintable(failure()));
        QCOMPARE(server.receivedBodyBytes(), 2 * (length + 7));
    }
};

} // namespace quenby

QTEST_GUILESS_MAIN(quenby::SendSpeedTest)
#include "tst_sendspeed.moc"
