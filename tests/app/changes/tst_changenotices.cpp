// What the desktop is told of changes, and what is offered there.

#include "app/changes/ChangeNotices.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/support/ManualTimeSource.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class ChangeNoticesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        notifications_ = std::make_unique<FakeNotifications>();
        time_ = std::make_shared<ManualTimeSource>();
        notices_ = std::make_unique<ChangeNotices>(*notifications_, time_);
        opened_.clear();
        connect(notices_.get(), &ChangeNotices::openRequested, this,
                [this](const ChangeRecord& record) { opened_.append(record.identifier); });
        shared_ = std::make_unique<QSignalSpy>(notices_.get(), &ChangeNotices::shareRequested);
    }
    void cleanup() { notices_.reset(); }

    void offersWhatCanBeDone() {
        const quint64 added = tell(u"f"_s, u"Report.pdf added"_s);
        const Notification notification = last();
        QCOMPARE(notification.title, u"Quenby New Update!"_s);
        QCOMPARE(notification.text, u" \n Report.pdf added"_s);
        QCOMPARE(notification.actions.size(), 2);
        QCOMPARE(notification.actions.at(0).label, u"Open"_s);
        QCOMPARE(notification.actions.at(1).label, u"Share"_s);
        notifications_->invoke(added, notification.clickKey);
        QCOMPARE(opened_, QStringList{u"f"_s});
        notifications_->invoke(tell(u"f"_s, u"again"_s), notification.actions.at(0).key);
        QCOMPARE(opened_.size(), 2);
        notifications_->invoke(tell(u"f"_s, u"again"_s), notification.actions.at(1).key);
        QCOMPARE(shared_->takeFirst(), (QVariantList{u"f"_s, u"Title of f"_s}));

        ChangeRecord gone;
        gone.count = 3;
        notices_->tell({gone, u"3 files deleted"_s});
        QVERIFY(last().actions.isEmpty() && last().clickKey.isEmpty());
        for (const auto& posted : notifications_->posted())
            QVERIFY(!posted.notification.text.contains(u"share.example"_s));
    }

    void laterOnesReplace() {
        tell(u"f"_s, u"F added"_s);
        tell(u"g"_s, u"G added"_s);
        tell(u"f"_s, u"F trashed"_s);
        QCOMPARE(notifications_->onScreen().size(), 2);
        QCOMPARE(last().text, u" \n F trashed"_s);
        tell({}, u"1 file added"_s);
        time_->advance(1min);
        tell({}, u"1 file added"_s); // of another file, as far as is known
        QCOMPARE(notifications_->onScreen().size(), 4);
    }

    void burstsAreSummedUp() {
        for (int i = 1; i <= 16; ++i)
            tell(u"f%1"_s.arg(i), u"F%1 added"_s.arg(i));
        time_->advance(10s);
        QCOMPARE(notifications_->onScreen().size(), 5);
        QCOMPARE(notifications_->posted().size(), 6); // and the fifth is not replaced each time
        QCOMPARE(last().text, u" \n F16 added\nand 11 more"_s);
        notifications_->invoke(notifications_->lastIdentifier(), last().clickKey);
        QCOMPARE(opened_, QStringList{u"f16"_s});
    }

    void oddTitles() {
        tell(u"f"_s, u"<b>a</b> &amp;\nb\u202e\u05d0\u05d1 \u0645\u06cc\u200c\u062e added"_s);
        QCOMPARE(last().text, u" \n <b>a</b> &amp;\\x0ab\\u202e\u05d0\u05d1 \u0645\u06cc\u200c\u062e added"_s);
        tell(u"g"_s, QString(10'000, u'x') + u" added"_s);
        QVERIFY(last().text.size() < 200);
        QVERIFY(last().text.endsWith(u"xxx added"_s)); // what happened is not cut off
    }

    void signOut() {
        for (int i = 1; i <= 8; ++i)
            tell(u"f%1"_s.arg(i), u"added"_s);
        notices_->clear();
        QVERIFY(notifications_->onScreen().isEmpty());
        time_->advance(10s); // what waited to be summed up is forgotten as well
        QVERIFY(notifications_->onScreen().isEmpty());
    }

private:
    quint64 tell(const QString& identifier, const QString& text) {
        ChangeRecord record;
        record.status = ChangeRecord::Status::added;
        record.identifier = identifier;
        record.title = u"Title of "_s + identifier;
        record.share = u"https://share.example/?id="_s + identifier;
        notices_->tell({record, text});
        return notifications_->lastIdentifier();
    }
    Notification last() const { return notifications_->posted().last().notification; }

    std::unique_ptr<FakeNotifications> notifications_;
    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<ChangeNotices> notices_;
    std::unique_ptr<QSignalSpy> shared_;
    QStringList opened_;
};

QTEST_GUILESS_MAIN(ChangeNoticesTest)
#include "tst_changenotices.moc"
