// Where the next poll of the change list goes on: behind a change's number, or at a token where changes have none.

#include "tests/app/changes/ChangeFeedStage.h"

using namespace quenby;
using namespace quenby::testing;

namespace {

// Of a service that gives changes no numbers; one without a token names no place at all.
QJsonObject tokenList(const QJsonArray& items, const QString& token) {
    return {{u"items"_s, items}, {u"newStartPageToken"_s, token}};
}

} // namespace

class ChangeMarksTest : public ChangeFeedStage {
    Q_OBJECT

private Q_SLOTS:
    void followsTokensWhereChangesHaveNoNumbers() {
        feed_->GetChangeListGoogleDrive();
        answer(tokenList({change(u"a"_s, -90, -60), change(u"b"_s, -80, -70)}, u"one"_s));
        QCOMPARE(feed_->DriveChangeInfoAPI().at(0).title, u"a"_s); // the later one
        for (const QString& token : {u"one"_s, u"two"_s}) {        // also after an answer without changes
            time_->advance(30s);
            answer(tokenList({}, u"two"_s));
            QCOMPARE(lastParameters().value(u"pageToken"_s), token);
            QVERIFY(!lastParameters().contains(u"startChangeId"_s) && !lastParameters().contains(u"includeDeleted"_s));
        }
        QCOMPARE(changed_->size(), 2);
        time_->advance(30s);
        answer(tokenList({change(u"a"_s, -90, 80), change(u"c"_s, 70, 75)}, u"three"_s));
        QCOMPARE(told_, (QStringList{u"a updated"_s, u"c added"_s}));

        time_->advance(30s);
        refuse(410); // the token is too old
        time_->advance(30s);
        answer(tokenList({change(u"a"_s, -90, 80), change(u"c"_s, 70, 75), change(u"d"_s, 130, 135)}, u"four"_s));
        QCOMPARE(lastParameters().value(u"includeDeleted"_s), false);
        QVERIFY(!lastParameters().contains(u"pageToken"_s));
        QCOMPARE(told_.mid(2), QStringList{u"d added"_s});
        time_->advance(30s);
        answer(changeList({}, 100)); // has got numbers
        QCOMPARE(lastParameters().value(u"pageToken"_s), u"four"_s);
        time_->advance(30s);
        answer(changeList({}, 100));
        QCOMPARE(lastParameters().value(u"startChangeId"_s).toVariant().toLongLong(), 101);
    }

    void numbersThatAreRefused_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("goesByToken");
        for (const int status : {400, 404, 410, 403, 500})
            QTest::addRow("%d", status) << status << (status != 403 && status != 500);
    }
    void numbersThatAreRefused() {
        QFETCH(int, status);
        QFETCH(bool, goesByToken);
        const auto both = [](const QJsonArray& items) {
            QJsonObject list = changeList(items, 100);
            list.insert(u"newStartPageToken"_s, u"token"_s);
            return list;
        };
        feed_->GetChangeListGoogleDrive();
        answer(both({change(u"a"_s, -90, -60)}));
        time_->advance(30s);
        refuse(status);
        QCOMPARE(lastParameters().value(u"startChangeId"_s).toVariant().toLongLong(), 101);
        for (int round = 0; round < 2; ++round) {
            time_->advance(30s);
            answer(both({change(u"a"_s, -90, -60)}));
            QVERIFY(round > 0 || lastParameters().contains(u"includeDeleted"_s));
        }
        QCOMPARE(lastParameters().contains(u"startChangeId"_s), !goesByToken);
        QCOMPARE(lastParameters().value(u"pageToken"_s).toString(), goesByToken ? u"token"_s : QString());
        QVERIFY(told_.isEmpty());
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 1);

        feed_->clear(); // another account may be on another service
        feed_->GetChangeListGoogleDrive();
        answer(both({}));
        time_->advance(30s);
        answer(both({}));
        QVERIFY(lastParameters().contains(u"startChangeId"_s));
    }
};

QTEST_GUILESS_MAIN(ChangeMarksTest)
#include "tst_changemarks.moc"
