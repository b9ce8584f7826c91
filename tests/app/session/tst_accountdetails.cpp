// What the Drive tells about the account, and when it is asked: against a network that the test plays.

#include "app/account/AccountSummary.h"
#include "app/session/AccountDetails.h"
#include "app/session/Reopening.h"
#include "app/session/SharingAddress.h"
#include "core/Endpoints.h"
#include "driveapi/GTLServiceDrive.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class AccountDetailsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        about_ = {{u"rootFolderId"_s, u"root"_s},
                  {u"quotaBytesTotal"_s, u"1000"_s},
                  {u"user"_s, QJsonObject{{u"displayName"_s, u"Ann"_s}, {u"emailAddress"_s, u"ann@example.com"_s}}}};
        failure_.reset();
        network_ = std::make_unique<FakeNetwork>();
        time_ = std::make_shared<ManualTimeSource>();
        network_->handler = [this](const URLRequest&) {
            const QJsonValue id = QJsonDocument::fromJson(network_->requests.back().body)["id"_L1];
            FakeReply reply;
            reply.failure = failure_;
            reply.body = QJsonDocument(QJsonObject{{u"id"_s, id}, {u"result"_s, about_}}).toJson();
            return reply;
        };
        service_ = std::make_shared<GTLServiceDrive>(Endpoints::provider(), network_->makeFetcherService(time_));
        details_ = std::make_unique<AccountDetails>(service_, time_);
        arrived_ = std::make_unique<QSignalSpy>(details_.get(), &AccountDetails::arrived);
        changed_ = std::make_unique<QSignalSpy>(details_.get(), &AccountDetails::changed);
        failed_ = std::make_unique<QSignalSpy>(details_.get(), &AccountDetails::failed);
    }
    void cleanup() { details_.reset(); }

    void fetchesAgainAfterTenMinutes() {
        details_->GetDetailOfUserDrive();
        QTRY_COMPARE(changed_->size(), 1);
        QCOMPARE(arrived_->size(), 1);
        QCOMPARE(details_->RootFolderId(), u"root"_s);
        QCOMPARE(details_->dicUserData()->emailAddress, u"ann@example.com"_s);
        time_->advance(599s);
        settle();
        QCOMPARE(network_->requests.size(), 1U);
        time_->advance(1s);
        QTRY_COMPARE(changed_->size(), 2);
        QCOMPARE(arrived_->size(), 1); // the first answer only

        details_->clear(); // signed out, and signed in again
        QVERIFY(!details_->dicUserData() && details_->RootFolderId().isEmpty() && !details_->DriveInfoAPI());
        QCOMPARE(time_->pendingTimers(), 0U);
        details_->GetDetailOfUserDrive();
        QTRY_COMPARE(arrived_->size(), 2);
    }

    void failureIsToldAndNotRepeated() {
        details_->GetDetailOfUserDrive();
        QTRY_COMPARE(changed_->size(), 1);
        failure_ = Error(URLErrorCode::serverCertificateUntrusted);
        time_->advance(600s);
        QTRY_COMPARE(failed_->size(), 1);
        QCOMPARE(time_->pendingTimers(), 0U);
        QVERIFY(details_->dicUserData()); // what is known stays
    }

    void clearEndsAFetchThatRuns() {
        network_->isHolding = true;
        details_->GetDetailOfUserDrive();
        QTRY_COMPARE(network_->waitingCount(), 1U);
        details_->clear();
        QTRY_COMPARE(network_->waitingCount(), 0U);
        settle();
        QCOMPARE(changed_->size() + failed_->size() + arrived_->size(), 0);
        QCOMPARE(time_->pendingTimers(), 0U);
    }

    void summary_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<QList<qint64>>("used");
        QTest::addColumn<QString>("text");
        constexpr qint64 most = std::numeric_limits<qint64>::max();
        const auto row = [](const char* title, const char* type, qint64 total, const QList<qint64>& used,
                            const char* text) {
            QTest::newRow(title) << QString::fromLatin1(type) << total << used << QString::fromLatin1(text);
        };
        row("sum of the services", "LIMITED", 16106127360, {4000000000, 1959267123, 1}, "37% of 15 GB used");
        row("no service", "LIMITED", 1048576, {}, "0% of 1 MB used");
        row("more than there is", "LIMITED", 1024, {1536}, "150% of 1 kB used");
        row("nothing to use", "LIMITED", 0, {5}, "0% of 0 bytes used");
        row("a total that is none", "LIMITED", -1, {5}, "0% of 0 bytes used");
        row("a total without a kind", "", 1048576, {1024}, "0% of 1 MB used");
        row("neither total nor kind", "", 0, {5}, "0% of unlimited storage used");
        row("unlimited", "UNLIMITED", 0, {1000000}, "0% of unlimited storage used");
        row("absurd", "LIMITED", 1, {most, most}, "999999% of 1 byte used");
    }
    void summary() {
        QFETCH(QString, type);
        QFETCH(qint64, total);
        QFETCH(QList<qint64>, used);
        QFETCH(QString, text);
        QJsonArray services;
        for (const qint64 bytes : used)
            services.append(QJsonObject{{u"serviceName"_s, u"ONE"_s}, {u"bytesUsed"_s, QString::number(bytes)}});
        about_.insert(u"quotaType"_s, type);
        about_.insert(u"quotaBytesTotal"_s, QString::number(total));
        about_.insert(u"quotaBytesByService"_s, services);
        details_->GetDetailOfUserDrive();
        QTRY_COMPARE(changed_->size(), 1);
        const AccountSummary made = details_->dicUserData().value_or(AccountSummary());
        QVERIFY(made.isComplete());
        QCOMPARE(quotaText(made), text);
    }

    void reopeningWithoutANetworkThatTells() {
        class Ignorant final : public HostReachability {
            std::unique_ptr<Watch> watchHost(const QString&, Changed) override { return nullptr; }
        };
        Reopening reopening(u"h"_s, std::make_shared<Ignorant>(), time_);
        QSignalSpy due(&reopening, &Reopening::due);
        for (const auto pause : {15s, 30s, 60s, 120s, 240s, 300s, 300s}) {
            reopening.failed();
            QCOMPARE(time_->nextDelay(), std::chrono::milliseconds(pause));
            time_->advance(pause);
        }
        QCOMPARE(due.size(), 7);
        reopening.failed();
        reopening.succeeded();
        QCOMPARE(time_->pendingTimers(), 0U);
        reopening.failed();
        QCOMPARE(time_->nextDelay(), 15000ms);
    }

    void reopeningWhenTheNetworkIsBack() {
        const auto network = std::make_shared<FakeReachability>();
        Reopening reopening(u"drive.example"_s, network, time_);
        QSignalSpy due(&reopening, &Reopening::due);
        for (int episode = 1; episode <= 2; ++episode) {
            reopening.failed();
            QCOMPARE(network->host(), u"drive.example"_s);
            QCOMPARE(time_->pendingTimers(), 1U); // whether it is the network is not known yet
            network->change(false);
            QCOMPARE(time_->pendingTimers(), 0U); // as long as it is away, there is nothing to try
            reopening.failed();
            QCOMPARE(time_->pendingTimers(), 0U);
            network->change(true);
            QCOMPARE(due.size(), episode);
            reopening.failed(); // the network is there, but the Drive is not
            QCOMPARE(time_->pendingTimers(), 1U);
            network->change(false);
            reopening.succeeded(); // an answer is an answer, whatever the network is said to be
            QVERIFY(!network->isWatched());
        }
    }

    void theSharingPagesAddress() {
        QCOMPARE(sharingAddress(Endpoints::localDrive(QUrl(u"http://127.0.0.1:4711"_s)), u"1/a b&c=d+é"_s),
                 u"http://127.0.0.1:4711/sharing/share?shareUiType=default&authuser=0&foreignService=googledrivesync"
                 "&access_token=1%2Fa%20b%26c%3Dd%2B%C3%A9&subapp=10&shareProtocolVersion=2&gaiaService=wise&theme=2"
                 "&client=desktop&command=settings&hl=en&popupWindowsEnabled=false&id="_s);
    }

private:
    QJsonObject about_;
    MaybeError failure_;
    std::unique_ptr<FakeNetwork> network_;
    std::shared_ptr<ManualTimeSource> time_;
    std::shared_ptr<GTLServiceDrive> service_;
    std::unique_ptr<AccountDetails> details_;
    std::unique_ptr<QSignalSpy> arrived_;
    std::unique_ptr<QSignalSpy> changed_;
    std::unique_ptr<QSignalSpy> failed_;
};

QTEST_GUILESS_MAIN(AccountDetailsTest)
#include "tst_accountdetails.moc"
