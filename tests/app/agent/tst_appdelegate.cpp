// The composition: launch and end in their order, who is signed in and whose uploads are whose.

#include "tests/app/agent/AppDelegateStage.h"

#include <QSignalSpy>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class AppDelegateTest : public AppDelegateStage {
    Q_OBJECT

private Q_SLOTS:
    void launchAndEndInOrder() {
        instance_->hold();
        keep(keptGrant(*local_, owner));
        launch();
        QTest::qWait(0);
        QVERIFY(caches_->removed().isEmpty()); // the older one still works there
        QVERIFY(!defaults_->contains(u"showUsegeText"_s) && keyring_->calls().isEmpty() && !hosts_->host());
        instance_->release();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently); // the gauge
        QCOMPARE(caches_->removed() + caches_->created(), (QStringList{u"imageCache"_s, u"imageCache"_s}));
        QVERIFY(defaults_->boolForKey(u"notificationDisplay"_s) && defaults_->contains(u"showUsegeText"_s));
        QVERIFY(window()->isVisible() && !window()->isShowingWelcome() && shows(owner));
        QVERIFY(!delegate_->applicationShouldTerminateAfterLastWindowClosed());
        window()->close();
        QVERIFY(delegate_->applicationShouldHandleReopen() && window()->isVisible());
        window()->close();
        Q_EMIT hosts_->fake()->clicked();
        QVERIFY(window()->isVisible() && !popover());
        Q_EMIT hosts_->fake()->middleClicked();
        QVERIFY(popover() && popover()->isVisible());
        Q_EMIT hosts_->fake()->middleClicked();
        QVERIFY(!popover()->isVisible());
        delegate_->applicationWillTerminate();
        QCOMPARE(caches_->removed().mid(1),
                 (QStringList{u"ScreenShotCaches"_s, u"ScreenCastCache"_s, u"imageCache"_s, u"Copied"_s}));
    }

    void filesWaitForASignIn() {
        const QByteArray first = makeFile("first");
        const QByteArray second = makeFile("second");
        delegate_->application_openFiles({makeFile("never")});
        delegate_->application_openFiles({first, second}); // in place of those before
        launch();
        QTRY_COMPARE(alerts_->waiting(), 1);
        QCOMPARE(alerts_->shown().last().alert.messageText, u"No login, please try again"_s);
        QCOMPARE(alerts_->shown().last().alert.informativeText, u"info"_s);
        delegate_->loginAccess(); // twice in a row is no reason to say it twice
        QTest::qWait(0);
        QVERIFY(window()->isShowingWelcome() && webViews_->views.empty());
        alerts_->answer(0);
        QTRY_COMPARE(webViews_->views.size(), 1U); // the sign-in dialog
        QCOMPARE(alerts_->shown().size(), 1);

        keep(keptGrant(*local_, owner)); // somebody signs in
        delegate_->loginAccess();
        QTRY_COMPARE_WITH_TIMEOUT(uploads(), 2, patiently);
        delegate_->application_openFiles({makeFile("third")});
        QTRY_COMPARE_WITH_TIMEOUT(notifications_->posted().size(), 3, patiently);
        QCOMPARE(alerts_->shown().size(), 1);
    }

    void uploadsOfAnotherAccount_data() {
        QTest::addColumn<bool>("isHandedOver"); // otherwise its sign-in was refused
        QTest::addColumn<QString>("first");     // whose uploads they are; afterwards, the owner signs in
        QTest::addColumn<int>("answer");        // -1: nothing is asked
        QTest::addColumn<int>("uploads");
        QTest::newRow("refused, the same again") << false << owner << -1 << 1;
        QTest::newRow("refused, another, yes") << false << guest << 0 << 1;
        QTest::newRow("refused, another, later") << false << guest << 1 << 0;
        QTest::newRow("refused, another, no") << false << guest << 2 << 0;
        QTest::newRow("handed over to the same") << true << owner << -1 << 1;
        QTest::newRow("handed over to another") << true << guest << 1 << 0;
    }
    void uploadsOfAnotherAccount() {
        QFETCH(bool, isHandedOver);
        QFETCH(QString, first);
        QFETCH(int, answer);
        QFETCH(int, uploads);
        // So that it is not there before it is handed over.
        QVERIFY(
            local_->orderFaults(R"([{"match":{"pathPrefix":"/upload/rpc","times":1000},"action":{"status":503}}])"));
        keep(isHandedOver ? keptGrant(*local_, first) : refusedGrant(first));
        delegate_->application_openFiles({makeFile("mine")});
        launch();
        QSignalSpy quit(delegate_.get(), &AppDelegate::quitRequested);
        if (isHandedOver) {
            QTRY_VERIFY(!window()->isShowingWelcome());
            instance_->playNewerInstance();
            QCOMPARE(quit.size(), 1);
            auto journal = std::move(journals_);
            cleanup();
            init();
            journals_ = std::move(journal);
            makeDelegate();
            launch();
            QTRY_VERIFY(window()->isShowingWelcome());
        } else {
            QTRY_VERIFY_WITH_TIMEOUT(shows(u"no longer accepts"_s), patiently);
            QVERIFY(window()->isShowingWelcome() && !delegate_->isSignedIn());
        }
        local_->clearFaults();
        keep(keptGrant(*local_, owner));
        delegate_->loginAccess();
        if (answer >= 0) {
            QTRY_COMPARE_WITH_TIMEOUT(alerts_->waiting(), 1, patiently);
            const QString asked = alerts_->shown().last().alert.informativeText;
            QVERIFY2(asked.contains(owner) && asked.contains(guest), qPrintable(asked));
            alerts_->answer(answer);
            QTRY_VERIFY(!alerts_->shown().last().answer.ticket().isPending()); // it has arrived
        }
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
        QTRY_COMPARE_WITH_TIMEOUT(notifications_->posted().size(), uploads, patiently);
        QCOMPARE(this->uploads(), uploads);
        QCOMPARE(alerts_->waiting(), 0);
        makeDelegate();
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face() && delegate_->isSignedIn(), patiently);
        QTRY_COMPARE(queuedUploads(), 0);
        if (answer == 1) // they still wait for their account
            QTRY_COMPARE(alerts_->waiting(), 1);
        else
            QCOMPARE(alerts_->waiting(), 0);
        QCOMPARE(this->uploads(), uploads);
    }

    void signingOutAsksForRunningUploads_data() {
        QTest::addColumn<bool>("isUploading");
        QTest::addColumn<int>("answer");
        QTest::newRow("nothing to lose") << false << -1;
        QTest::newRow("rather not") << true << 1;
        QTest::newRow("all the same") << true << 0;
    }
    void signingOutAsksForRunningUploads() {
        QFETCH(bool, isUploading);
        QFETCH(int, answer);
        keep(keptGrant(*local_, owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
        QVERIFY(visibleInMenu(u"Sign Out"_s) && !visibleInMenu(u"Sign In"_s));
        if (isUploading)
            delegate_->application_openFiles({makeFile("under way")});
        delegate_->logoutUser();
        delegate_->logoutUser(); // pressed twice
        QCOMPARE(alerts_->waiting(), isUploading ? 1 : 0);
        if (isUploading) {
            QCOMPARE(alerts_->shown().last().alert.buttons, (QStringList{u"Sign Out"_s, u"Cancel"_s}));
            QVERIFY(delegate_->isSignedIn());
            alerts_->answer(answer);
        }
        if (answer == 1) {
            QTRY_COMPARE_WITH_TIMEOUT(uploads(), 1, patiently);
            QVERIFY(delegate_->isSignedIn());
            return;
        }
        QTRY_COMPARE_WITH_TIMEOUT(webViews_->views.size(), 1U, patiently); // the sign-in dialog again
        QVERIFY(window()->isShowingWelcome() && !delegate_->isSignedIn());
        QVERIFY(visibleInMenu(u"Sign In"_s) && !visibleInMenu(u"Sign Out"_s));
        QVERIFY(visibleInMenu(u"Data not available"_s));
        QVERIFY(!keyring_->item(itemOf(drive_->endpoints())));
        QCOMPARE(uploads(), 0);
    }

    void aKeyringThatHangs() {
        keep(keptGrant(*local_, owner));
        keyring_->hold();
        launch();
        QTRY_VERIFY(hosts_->host());     // everything else goes on
        QVERIFY(!window()->isVisible()); // it may be about to answer
        time_->advance(1s);
        QVERIFY(window()->isVisible() && window()->isShowingWelcome() && shows(u"Waiting for the keyring…"_s));
        QCOMPARE(webViews_->views.size(), 0U);
        keyring_->release();
        QTRY_VERIFY(!window()->isShowingWelcome());
        QVERIFY(delegate_->isSignedIn());
    }

    void aKeyringThatStaysLocked() {
        keep(keptGrant(*local_, owner));
        keyring_->setState(FakeKeyring::State::locked);
        launch();
        QTRY_COMPARE(keyring_->waitingCalls(), 1);
        keyring_->dismissUnlock();
        QTRY_VERIFY(shows(u"The keyring did not do it."_s));
        QCOMPARE(webViews_->views.size(), 0U); // that is not signed out
        keyring_->setState(FakeKeyring::State::available);
        QTRY_VERIFY(delegate_->isSignedIn());
    }

    void theNetworkComesLater() {
        keep(keptGrant(*local_, owner));
        local_->kill();
        launch();
        QTRY_VERIFY_WITH_TIMEOUT((time_->advance(1s), shows(u"The Drive does not answer"_s)), patiently);
        QVERIFY(revivals_ > 0 && delegate_->isSignedIn() && !window()->isShowingWelcome());
        network_->change(false);
        QVERIFY(local_->start());
        time_->advance(1h);
        QVERIFY(!hosts_->fake()->face()); // nobody asks in vain
        network_->change(true);
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake()->face(), patiently);
        QVERIFY(!shows(u"The Drive does not answer"_s) && shows(u"% of"_s));
    }

    void reasonsToEnd() {
        QSignalSpy quit(delegate_.get(), &AppDelegate::quitRequested);
        keep(keptGrant(*local_, owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
        delegate_->logoutUser();
        QTRY_VERIFY_WITH_TIMEOUT(visibleSheet(), patiently);
        choose(u"Quit Quenby"_s); // not underneath the sign-in dialog, which says why
        QCOMPARE(quit.size(), 0);
        QVERIFY(visibleSheet()->notice().contains(u"To quit"_s));
        sessionEnd_->requestEnd();
        sessionEnd_->requestEnd();
        QCOMPARE(quit.size(), 2);
        instance_->playNewerInstance();
        QCOMPARE(quit.size(), 3);
        visibleSheet()->reject();
        QVERIFY(!visibleSheet());
        choose(u"Quit Quenby"_s);
        QCOMPARE(quit.size(), 4);
        delegate_->applicationWillTerminate();
        defaults_->tellTrouble(u"The settings are damaged."_s);
        QCOMPARE(alerts_->shown().last().alert.informativeText, u"The settings are damaged."_s);
    }
};

QTEST_MAIN(AppDelegateTest)
#include "tst_appdelegate.moc"
