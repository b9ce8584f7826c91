// A feed of changes against a network that the test plays, in time that stands still.
#pragma once

#include "app/changes/ChangeFeed.h"
#include "driveapi/GTLServiceDrive.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QLoggingCategory>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

namespace quenby::testing {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// Of the manual time.
inline QString dateText(int seconds) {
    return QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC).addSecs(seconds).toString(Qt::ISODateWithMs);
}

inline QJsonObject change(const QString& identifier, int created, int changed) {
    return {{u"fileId"_s, identifier},
            {u"modificationDate"_s, dateText(changed)},
            {u"file"_s, QJsonObject{{u"id"_s, identifier},
                                    {u"title"_s, identifier},
                                    {u"createdDate"_s, dateText(created)},
                                    {u"modifiedDate"_s, dateText(changed)}}}};
}

inline QJsonObject changeList(const QJsonArray& items, qint64 largestChangeId) {
    return {{u"items"_s, items}, {u"largestChangeId"_s, QString::number(largestChangeId)}};
}

// One thread, that can be kept busy.
class HeldQueue final : public QThreadPool {
public:
    HeldQueue() { setMaxThreadCount(1); }
    ~HeldQueue() override { waitForGo(); }
    void hold() {
        start([this] { go_.acquire(); });
    }
    void waitForGo() {
        go_.release();
        waitForDone();
        go_.tryAcquire();
    }

private:
    QSemaphore go_;
};

class ChangeFeedStage : public QObject {
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules(u"quenby.changes=false\nquenby.http=false"_s); }
    void init() {
        network_ = std::make_unique<FakeNetwork>();
        network_->isHolding = true;
        time_ = std::make_shared<ManualTimeSource>();
        service_ = std::make_shared<GTLServiceDrive>(Endpoints::provider(), network_->makeFetcherService(time_));
        service_->setParseQueue(&queue_);
        service_->ticketSettings().shouldFetchNextPages = true;
        defaults_ = std::make_unique<FakeDefaults>();
        feed_ = std::make_unique<ChangeFeed>(
            service_, *defaults_, [] { return u"share:"_s; }, time_);
        changed_ = std::make_unique<QSignalSpy>(feed_.get(), &ChangeFeed::changed);
        told_.clear();
        connect(feed_.get(), &ChangeFeed::noticed, this, [this](const ChangeNotice& one) { told_.append(one.text); });
    }
    void cleanup() {
        feed_.reset();
        service_.reset();
    }

protected:
    QByteArray reply(const QJsonObject& result) const {
        return QJsonDocument(QJsonObject{{u"id"_s, u"x"_s}, {u"result"_s, result}}).toJson(QJsonDocument::Compact);
    }
    // Answers the poll, and waits until it is done with.
    template <typename Answer>
    void answerWith(Answer give) {
        QVERIFY(QTest::qWaitFor([this] { return network_->waitingCount() == 1; }));
        give(network_->last());
        QVERIFY(QTest::qWaitFor([this] { return time_->nextDelay() == 30s; }));
    }
    // The server's time in seconds, when it tells its time.
    void answer(const QJsonObject& result, std::optional<int> serverTime = {}) {
        HeaderFields headers;
        headers.set("Content-Type", "application/json-rpc");
        if (serverTime) {
            const QDateTime date = QDateTime::fromString(dateText(*serverTime), Qt::ISODateWithMs);
            headers.set("Date", QLocale::c().toString(date, u"ddd, dd MMM yyyy HH:mm:ss 'GMT'"_s).toLatin1());
        }
        answerWith([&](auto& exchange) { exchange.answer(200, reply(result), headers); });
    }
    void refuse(int code) {
        const QJsonObject error{{u"code"_s, code}, {u"message"_s, u"no"_s}};
        const QByteArray body = QJsonDocument(QJsonObject{{u"id"_s, u"x"_s}, {u"error"_s, error}}).toJson();
        answerWith([&](auto& exchange) { exchange.answer(200, body); });
    }
    // Answers the poll; the answer stays on the queue, behind its parsing. Few changes would not go there: there are
    // others with them, which are too old to matter.
    void answerHeld(QJsonArray items, qint64 largestChangeId) {
        for (int i = 0; i < 20; ++i)
            items.append(change(u"past%1"_s.arg(i), -900, -800));
        bool isHeld = false;
        const auto parsed = connect(service_.get(), &GTLService::notification, this, [&](const QString& name) {
            if (name != kGTLServiceTicketParsingStoppedNotification)
                return;
            queue_.hold();
            isHeld = true;
        });
        QVERIFY(QTest::qWaitFor([this] { return network_->waitingCount() == 1; }));
        network_->last().answer(200, reply(changeList(items, largestChangeId)));
        QVERIFY(QTest::qWaitFor([&] { return isHeld; }));
        settle();
        disconnect(parsed);
    }
    QJsonObject lastParameters() const {
        return QJsonDocument::fromJson(network_->requests.back().body)["params"_L1].toObject();
    }

    HeldQueue queue_;
    std::unique_ptr<FakeNetwork> network_;
    std::shared_ptr<ManualTimeSource> time_;
    std::shared_ptr<GTLServiceDrive> service_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<ChangeFeed> feed_;
    std::unique_ptr<QSignalSpy> changed_;
    QStringList told_;
};

} // namespace quenby::testing
