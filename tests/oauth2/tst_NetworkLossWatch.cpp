#include "oauth2/NetworkInformationReachability.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/support/ManualTimeSource.h"

#include "oauth2/NetworkLossWatch.h"

#include <QTest>

using namespace quenby;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestNetworkLossWatch : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        told_.clear();
        time_ = std::make_shared<testing::ManualTimeSource>();
        network_ = std::make_shared<testing::FakeReachability>();
        watch_ = std::make_unique<NetworkLossWatch>(
            network_, time_, [this] { told_ += 'L'; }, [this] { told_ += 'F'; });
        watch_->start(u"accounts.example.com"_s, 30s);
    }

    void lossIsToldAfterTheTimeout() {
        QCOMPARE(network_->host(), u"accounts.example.com"_s);
        network_->change(false);
        time_->advance(29s);
        QCOMPARE(told_, "");
        network_->change(false); // the wait does not begin anew
        time_->advance(1s);
        QCOMPARE(told_, "L");
        QVERIFY(watch_->hasNotifiedNetworkLoss());
        network_->change(false);
        time_->advance(60s);
        QCOMPARE(told_, "L");
        network_->change(true);
        network_->change(true);
        QCOMPARE(told_, "LF");
        QVERIFY(!watch_->hasNotifiedNetworkLoss());
        network_->change(false);
        time_->advance(30s);
        QCOMPARE(told_, "LFL");
    }

    void shortLossesAreNotTold() {
        for (int loss = 0; loss < 3; ++loss) {
            network_->change(false);
            time_->advance(29s);
            network_->change(true);
        }
        time_->advance(60s);
        QCOMPARE(told_, "");
    }

    void stopEndsEverything() {
        network_->change(false);
        watch_->stop();
        QVERIFY(!network_->isWatched());
        time_->advance(60s);
        QCOMPARE(told_, "");
    }

    void zeroTimeoutWatchesNothing() {
        watch_->start(u"accounts.example.com"_s, 0s);
        QVERIFY(!network_->isWatched());
    }

    void thisComputerIsNotWatched_data() {
        QTest::addColumn<QString>("host");
        for (const char* host : {"127.0.0.1", "::1", "localhost", "LOCALHOST"})
            QTest::newRow(host) << QString::fromLatin1(host);
    }
    void thisComputerIsNotWatched() {
        QFETCH(QString, host);
        QVERIFY(!NetworkInformationReachability().watchHost(host, [](bool) {}));
    }

private:
    std::shared_ptr<testing::ManualTimeSource> time_;
    std::shared_ptr<testing::FakeReachability> network_;
    std::unique_ptr<NetworkLossWatch> watch_;
    QByteArray told_; // "L" for each loss, "F" for each return
};

QTEST_GUILESS_MAIN(TestNetworkLossWatch)
#include "tst_NetworkLossWatch.moc"
