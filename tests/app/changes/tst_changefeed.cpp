// When the change list is asked for, what is done with its answers, and whose clock counts.

#include "app/changes/FeedAnswerReader.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLJSONParser.h"
#include "tests/app/changes/ChangeFeedStage.h"

using namespace quenby;
using namespace quenby::testing;

class ChangeFeedTest : public ChangeFeedStage {
    Q_OBJECT

private Q_SLOTS:
    void pollsAgainAfterThirtySeconds() {
        QVERIFY(!feed_->isFetchingFirst());
        feed_->GetChangeListGoogleDrive();
        QVERIFY(feed_->isFetchingFirst());
        QCOMPARE(changed_->size(), 1);
        answer(changeList({change(u"a"_s, -90, -60)}, 100));
        QCOMPARE(lastParameters().value(u"includeDeleted"_s), false);
        QVERIFY(!lastParameters().contains(u"startChangeId"_s));
        QVERIFY(!feed_->isFetchingFirst());
        QCOMPARE(changed_->size(), 2);
        QCOMPARE(feed_->DriveChangeInfoAPI().at(0).share, u"share:a"_s);

        time_->advance(29'999ms);
        settle();
        QCOMPARE(network_->requests.size(), 1U);
        time_->advance(1ms);
        answer(changeList({}, 100)); // nothing: nothing to show anew
        QCOMPARE(lastParameters().value(u"startChangeId"_s).toVariant().toLongLong(), 101);
        QVERIFY(!lastParameters().contains(u"includeDeleted"_s));
        QCOMPARE(changed_->size(), 2);

        feed_->addUploaded(u"mine"_s);
        time_->advance(30s);
        answer(changeList({change(u"b"_s, 40, 50), change(u"mine"_s, 40, 45)}, 102));
        QCOMPARE(changed_->size(), 3);
        QCOMPARE(told_, QStringList{u"b added"_s});
        defaults_->setValueForKey(u"notificationDisplay"_s, false);
        time_->advance(30s);
        answer(changeList({change(u"c"_s, 70, 80)}, 103));
        QCOMPARE(told_.size(), 1);
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 4);
    }

    void failedPolls_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("server error") << 500 << QByteArray("oh");
        QTest::newRow("error object") << 200
                                      << QByteArray("{\"id\":\"x\",\"error\":{\"code\":401,\"message\":\"no\"}}");
        QTest::newRow("cut short") << 200 << QByteArray("{\"id\":\"x\",\"result\":{\"items\":[{");
        QTest::newRow("another kind") << 200
                                      << QByteArray("{\"id\":\"x\",\"result\":{\"kind\":\"drive#file\",\"id\":\"f\"}}");
        QTest::newRow("no connection") << 0 << QByteArray();
    }
    void failedPolls() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        feed_->GetChangeListGoogleDrive();
        const auto fail = [&] {
            if (status == 0)
                answerWith([](auto& exchange) { exchange.fail(Error(URLErrorCode::cannotFindHost)); });
            else
                answerWith([&](auto& exchange) { exchange.answer(status, body); });
        };
        fail();
        QVERIFY(feed_->isFetchingFirst()); // is asked for again
        time_->advance(30s);
        answer(changeList({change(u"a"_s, -90, -60)}, 100));
        time_->advance(30s);
        fail();
        QVERIFY(!feed_->isFetchingFirst());
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 1); // what is known stays
        QCOMPARE(changed_->size(), 2);
        time_->advance(30s);
        answer(changeList({change(u"a"_s, -90, -60), change(u"b"_s, 55, 59), change(u"c"_s, 70, 75)}, 102));
        QCOMPARE(lastParameters().value(u"includeDeleted"_s), false);
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 3);
        QCOMPARE(told_, QStringList{u"c added"_s});
    }

    // Whenever the user signs out and in again, one chain is left, and it is about the new account alone.
    void signOutAndInAgain_data() {
        QTest::addColumn<QString>("during");
        for (const char* during : {"request", "unsent request", "reading", "pause", "nothing"})
            QTest::newRow(during) << QString::fromLatin1(during);
    }
    void signOutAndInAgain() {
        QFETCH(QString, during);
        feed_->GetChangeListGoogleDrive();
        answer(changeList({change(u"old"_s, -90, -60)}, 100));
        if (during != u"pause"_s) {
            network_->refusesConnections = during == u"unsent request"_s;
            time_->advance(30s);
            network_->refusesConnections = false;
        }
        if (during == u"reading"_s)
            answerHeld({change(u"older"_s, -9, 10)}, 101);
        feed_->clear();
        QVERIFY(feed_->DriveChangeInfoAPI().isEmpty() && !feed_->isFetchingFirst());
        if (during != u"nothing"_s)
            time_->advance(5s);
        feed_->GetChangeListGoogleDrive();
        feed_->GetChangeListGoogleDrive();
        queue_.waitForGo();
        settle();
        QCOMPARE(network_->waitingCount(), 1U);
        answer(changeList({change(u"new"_s, 20, 31)}, 7));
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 1);
        QCOMPARE(feed_->DriveChangeInfoAPI().at(0).title, u"new"_s);
        QVERIFY(told_.isEmpty()); // it was there when the user came
        for (int i = 1; i <= 10; ++i) {
            const size_t before = network_->requests.size();
            time_->advance(30s);
            answer(changeList({}, 7));
            QCOMPARE(network_->requests.size(), before + 1);
            QCOMPARE(time_->pendingTimers(), 1U);
        }
    }

    void uploadEndsMeanwhile() {
        feed_->GetChangeListGoogleDrive();
        answer(changeList({}, 100));
        time_->advance(30s);
        answerHeld({change(u"a"_s, 20, 21), change(u"b"_s, 20, 20)}, 101);
        feed_->addUploaded(u"a"_s);
        feed_->addUploaded(u"later"_s);
        queue_.waitForGo();
        settle();
        QCOMPARE(told_, QStringList{u"b added"_s});
        time_->advance(30s);
        answer(changeList({change(u"later"_s, 40, 41), change(u"a"_s, 20, 42)}, 102));
        QCOMPARE(told_.last(), u"a updated"_s);
        QCOMPARE(told_.size(), 2);
    }

    void signOutWhileItIsTold() {
        feed_->GetChangeListGoogleDrive();
        answer(changeList({}, 100));
        connect(feed_.get(), &ChangeFeed::noticed, feed_.get(), &ChangeFeed::clear);
        time_->advance(30s);
        QTRY_COMPARE(network_->waitingCount(), 1U);
        network_->last().answer(200, reply(changeList({change(u"a"_s, 20, 20), change(u"b"_s, 20, 21)}, 102)), {});
        QTRY_COMPARE(told_.size(), 1);
        settle();
        QCOMPARE(told_.size(), 1);
        QCOMPARE(time_->pendingTimers(), 0U);
    }

    void longAnswers_data() {
        QTest::addColumn<bool>("hasNumbers");
        QTest::newRow("numbers") << true;
        QTest::newRow("tokens") << false;
    }
    void longAnswers() {
        QFETCH(bool, hasNumbers);
        const int perPage = hasNumbers ? 1000 : 10;
        network_->isHolding = false;
        network_->handler = [this, hasNumbers, perPage](const URLRequest& request) {
            const QJsonObject call = QJsonDocument::fromJson(request.body).object();
            const int page = call["params"_L1]["pageToken"_L1].toString().toInt();
            QJsonArray items;
            for (int i = page * perPage; i < (page + 1) * perPage; ++i)
                items.append(change(u"f%1"_s.arg(i), i - 40'000, i - 30'000));
            QJsonObject list = changeList(items, hasNumbers ? 50'000 : 0);
            list.insert(u"nextPageToken"_s, QString::number(page + 1)); // there is no end
            return FakeReply{.status = 200, .body = reply(list)};
        };
        feed_->GetChangeListGoogleDrive();
        QTRY_VERIFY_WITH_TIMEOUT(!feed_->isFetchingFirst(), 60'000);
        QCOMPARE(network_->requests.size(), 27U);
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 15);
        QCOMPARE(feed_->DriveChangeInfoAPI().at(0).title, u"f%1"_s.arg(27 * perPage - 1));
        network_->isHolding = true;
        time_->advance(30s);
        QTRY_COMPARE(network_->waitingCount(), 1U);
        QCOMPARE(lastParameters().value(u"startChangeId"_s).toVariant().toLongLong(), hasNumbers ? 50'001 : 0);
        QCOMPARE(lastParameters().value(u"pageToken"_s).toString(), hasNumbers ? QString() : u"27"_s); // the rest
        QCOMPARE(lastParameters().contains(u"includeDeleted"_s), !hasNumbers);
    }

    void oddAnswers() {
        const QString longTitle(10'000, u'x');
        const QString oddTitle = u"<b>\u05d0\u05d1\u202e&amp;\n\t\u0000"_s;
        QJsonObject longOne = change(longTitle, 1, 2);
        longOne.insert(u"fileId"_s, 5);
        QJsonObject gone = change(u"gone"_s, 1, 2);
        gone.insert(u"deleted"_s, true);
        const QJsonArray items{QJsonValue::Null,
                               QJsonObject(),
                               7,
                               u"text"_s,
                               longOne,
                               change(oddTitle, 3, 4),
                               gone,
                               QJsonObject{{u"fileId"_s, u"d"_s}, {u"modificationDate"_s, u"yesterday"_s}},
                               QJsonObject{{u"file"_s, QJsonObject{{u"labels"_s, u"trashed"_s}, {u"title"_s, 3}}}}};
        const auto list = std::dynamic_pointer_cast<GTLDriveChangeList>(GTLObject::objectForJSON(
            GTLJSONParser::objectWithData(QJsonDocument(changeList(items, -1)).toJson()).value(),
            &GTLDriveChangeList::classDescriptor()));
        const QList<FeedChange> read = feedAnswer(*list).items;
        QCOMPARE(read.size(), 6); // what is an object
        QVERIFY(!read.at(0).file && !read.at(0).modificationDate.isValid());
        QCOMPARE(read.at(1).file->title, longTitle);
        QCOMPARE(read.at(2).file->title, oddTitle);
        QCOMPARE(read.at(2).modificationDate, QDateTime::fromString(dateText(4), Qt::ISODateWithMs));
        QVERIFY(!read.at(3).file);
        QVERIFY(read.at(4).fileId == u"d"_s && !read.at(4).modificationDate.isValid());
        QVERIFY(read.at(5).file->thumbnailLink.isEmpty());
        QVERIFY(!read.at(5).file->isTrashed && read.at(5).file->title.isEmpty());
    }

    // The server's dates are compared with the server's own time.
    void wrongClocks_data() {
        QTest::addColumn<int>("wrongBy"); // seconds
        QTest::newRow("right") << 0;
        QTest::newRow("an hour ahead") << 3600;
        QTest::newRow("an hour behind") << -3600;
    }
    void wrongClocks() {
        QFETCH(int, wrongBy);
        time_->jumpWallClock(std::chrono::seconds(wrongBy));
        feed_->GetChangeListGoogleDrive();
        answer(changeList({change(u"a"_s, -90, -60)}, 100), 0);
        for (int poll = 1; poll <= 4; ++poll) {
            time_->advance(30s);
            if (poll == 2)
                time_->jumpWallClock(-1h); // somebody sets it
            answer(changeList({change(u"f%1"_s.arg(poll), 30 * poll - 9, 30 * poll)}, 100 + poll), 30 * poll);
        }
        QCOMPARE(told_, (QStringList{u"f1 added"_s, u"f2 added"_s, u"f3 added"_s, u"f4 added"_s}));
    }

    // After it, a failed poll: what happened meanwhile is shown, and not told in one go.
    void oldChangesAreNotTold_data() {
        QTest::addColumn<int>("jump"); // seconds, of the wall clock
        QTest::newRow("sleep") << 8 * 3600;
        QTest::newRow("clock set back") << -3600;
    }
    void oldChangesAreNotTold() {
        QFETCH(int, jump);
        const int slept = std::max(jump, 0);
        feed_->GetChangeListGoogleDrive();
        answer(changeList({change(u"a"_s, -90, -60)}, 100), 0);
        time_->advance(30s);
        time_->jumpWallClock(std::chrono::seconds(jump));
        answerWith([](auto& exchange) { exchange.fail(Error(URLErrorCode::cannotFindHost)); });
        time_->advance(30s);
        answer(changeList({change(u"a"_s, -90, -60), change(u"b"_s, -80, -70), change(u"c"_s, slept + 20, slept + 25),
                           change(u"d"_s, slept + 40, slept + 45)},
                          103),
               slept + 60);
        QCOMPARE(feed_->DriveChangeInfoAPI().size(), 4);
        QCOMPARE(told_, QStringList{u"d added"_s});
    }
};

QTEST_GUILESS_MAIN(ChangeFeedTest)
#include "tst_changefeed.moc"
