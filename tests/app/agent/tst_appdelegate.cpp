// The desktop program put together, with every service of the platform played by the test and a real local Drive.

#include "app/agent/AppDelegate.h"
#include "app/agent/HandoverLines.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/window/GTMOAuth2WindowUi.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeCacheFolders.h"
#include "tests/platform/fakes/FakeCaptureSession.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeDisplays.h"
#include "tests/platform/fakes/FakeFileBrowser.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeMoviePlayer.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/platform/fakes/FakeScreenCaptureTool.h"
#include "tests/platform/fakes/FakeScreenshotQuery.h"
#include "tests/platform/fakes/FakeSessionEnd.h"
#include "tests/platform/fakes/FakeSingleInstance.h"
#include "tests/platform/fakes/FakeStatusItemHost.h"
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabs/OldTabs.h"
#include "workspace/tabs/WorkspaceTabs.h"
#include "workspace/window/WorkspaceToolBar.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patiently = 60000;                   // ms; only a hang takes so long
const QString owner = u"robin.hale@example.com"_s; // of the local Drive
const QString guest = u"guest@example.com"_s;      // may sign in, but not upload

} // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        local_ = std::make_unique<LocalDriveProcess>();
        QVERIFY2(local_->start(), local_->log().constData());
        time_ = std::make_shared<ManualTimeSource>();
        network_ = std::make_shared<FakeReachability>();
        drive_ =
            std::make_unique<DriveConnection>(Endpoints::localDrive(local_->url()), grantedClient(), time_, nullptr);
        drive_->driveService()->ticketSettings().maxRetryInterval = 4;
        platform_ = std::make_unique<PlatformServices>();
        defaults_ = place(platform_->defaults, std::make_unique<FakeDefaults>());
        caches_ = place(platform_->cacheFolders, std::make_unique<FakeCacheFolders>());
        keyring_ = place(platform_->keyring, std::make_unique<FakeKeyring>());
        notifications_ = place(platform_->notifications, std::make_unique<FakeNotifications>());
        hosts_ = place(platform_->statusItemHosts, std::make_unique<FakeStatusItemHosts>());
        alerts_ = place(platform_->alerts, std::make_unique<FakeAlerts>());
        place(platform_->filePanels, std::make_unique<FakeFilePanels>());
        place(platform_->fileBrowser, std::make_unique<FakeFileBrowser>());
        place(platform_->pasteboard, std::make_unique<FakePasteboard>());
        place(platform_->opener, std::make_unique<FakeOpener>());
        place(platform_->displays, std::make_unique<FakeDisplays>());
        place(platform_->captureSessions, std::make_unique<FakeCaptureSessions>());
        place(platform_->moviePlayers, std::make_unique<FakeMoviePlayers>());
        captureTool_ = place(platform_->screenCaptureTool, std::make_unique<FakeScreenCaptureTool>());
        place(platform_->screenshotQuery, std::make_unique<FakeScreenshotQuery>());
        platform_->makeStopItemHosts = [] { return std::make_unique<FakeStatusItemHosts>(); };
        webViews_ = place(platform_->webViews, std::make_unique<FakeWebViews>());
        instance_ = place(platform_->singleInstance, std::make_unique<FakeSingleInstance>());
        sessionEnd_ = place(platform_->sessionEnd, std::make_unique<FakeSessionEnd>());
        delegate_ = std::make_unique<AppDelegate>(
            AppDelegate::Surroundings{*platform_, *drive_, network_, [this] { ++revivals_; }});
        revivals_ = 0;
    }
    void cleanup() {
        delegate_.reset();
        platform_.reset();
    }

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
                 (QStringList{u"ScreenShotCaches"_s, u"ScreenCastCache"_s, u"imageCache"_s}));
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
        QTest::newRow("refused, another, no") << false << guest << 1 << 0;
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
            const Handover left = instance_->playNewerInstance();
            QCOMPARE(workFromHandover(left).uploads.count(), 1);
            QCOMPARE(quit.size(), 1);
            cleanup();
            init();
            instance_->setInheritance(left);
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
        QVERIFY(workFromHandover(instance_->playNewerInstance()).uploads.count() == 0);
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

    // A page that fills the screen gives it back, whatever becomes of its tab.
    void aPageFillsTheScreen_data() {
        QTest::addColumn<QString>("end");
        QTest::newRow("the page") << u"page"_s;
        QTest::newRow("the user") << u"user"_s;
        QTest::newRow("another tab") << u"tab"_s;
        QTest::newRow("the page's process") << u"process"_s;
        QTest::newRow("a sign-out") << u"sign-out"_s;
    }
    void aPageFillsTheScreen() {
        QFETCH(QString, end);
        openTwoTabs();
        FakeBrowserView& page = webViews_->lastBrowser();
        auto* bar = window()->findChild<TabBar*>();
        Q_EMIT webViews_->browsers.front()->fullScreenRequested(true); // nobody sees that one
        QVERIFY(!window()->isFullScreen() && bar->isVisible());
        Q_EMIT page.fullScreenRequested(true);
        QVERIFY(window()->isFullScreen() && !bar->isVisible() && !window()->toolBar().isVisible());
        if (end == u"page"_s)
            Q_EMIT page.fullScreenRequested(false);
        else if (end == u"user"_s)
            window()->FullScreenButtonToolbarAction();
        else if (end == u"tab"_s)
            bar->setCurrentIndex(0);
        else if (end == u"process"_s)
            page.loseProcess();
        else
            delegate_->logoutUser();
        QVERIFY(!window()->isFullScreen() && !bar->isHidden() && !window()->toolBar().isHidden());
        const bool isToldToLeave = page.scripts.last().contains(u"exitFullscreen"_s);
        QCOMPARE(isToldToLeave, end != u"page"_s && end != u"process"_s);
    }

    // New documents are made where the account's files are, and in no other account's.
    void newDocumentsLieInTheDrive() {
        openTwoTabs();
        const auto folder = [this] {
            Q_EMIT window()->toolBar().OpenNewGoogle(1);
            return QUrlQuery(webViews_->lastBrowser().loads.last()).queryItemValue(u"folder"_s);
        };
        QTRY_VERIFY_WITH_TIMEOUT(visibleInMenu(u"Sign Out"_s) && shows(u"% of"_s), patiently);
        QVERIFY(!folder().isEmpty());
        const QByteArray next = keptGrant(*local_, guest);
        delegate_->logoutUser();
        QTRY_COMPARE_WITH_TIMEOUT(webViews_->views.size(), 1U, patiently);
        local_->kill(); // so that nothing gets known of the next one
        keep(next);
        delegate_->loginAccess();
        QTRY_VERIFY_WITH_TIMEOUT(delegate_->isSignedIn(), patiently);
        QCOMPARE(folder(), QString());
    }

    // Whose sign-in is refused comes back to the tabs; somebody else does not find them.
    void tabsBelongToTheirAccount_data() {
        QTest::addColumn<QString>("next");
        QTest::addColumn<bool>("findsThem");
        QTest::newRow("the same") << owner << true;
        QTest::newRow("another") << guest << false;
    }
    void tabsBelongToTheirAccount() {
        QFETCH(QString, next);
        QFETCH(bool, findsThem);
        writeOldTabs(*defaults_, {{u"Trash"_s, drive_->endpoints().webPlaces.drive.below(u"/drive/trash"_s)},
                                  {u"Recent"_s, drive_->endpoints().webPlaces.drive.below(u"/drive/recent"_s)}});
        writeUserOfOldTabs(*defaults_, owner);
        keep(refusedGrant(owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(shows(u"no longer accepts"_s), patiently);
        keep(keptGrant(*local_, next));
        delegate_->loginAccess();
        QTRY_COMPARE_WITH_TIMEOUT(window()->findChild<TabBar*>()->count(), findsThem ? 2 : 1, patiently);
        QVERIFY(delegate_->isSignedIn());
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

private:
    template <typename Service, typename Fake>
    static Fake* place(std::unique_ptr<Service>& service, std::unique_ptr<Fake> fake) {
        Fake* const placed = fake.get();
        service = std::move(fake);
        return placed;
    }
    void launch() {
        delegate_->applicationWillFinishLaunching();
        delegate_->applicationDidFinishLaunching();
    }
    // Of the owner, both loaded.
    void openTwoTabs() {
        keep(keptGrant(*local_, owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
        window()->findChild<WorkspaceTabs*>()->addNewTabToTabView();
        QCOMPARE(webViews_->browsers.size(), 2U);
    }
    void keep(const QByteArray& grant) {
        const KeyringItem item = itemOf(drive_->endpoints());
        keyring_->setItem(item, grant);
        defaults_->setValueForKey(KeychainPersistence::prefsKeyForName(item.serviceName), true);
    }
    QByteArray makeFile(const char* name) {
        QFile file(files_.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write("content") < 0)
            qFatal("A file for the test can't be written.");
        return QFile::encodeName(file.fileName());
    }
    // That have reached the Drive.
    int uploads() {
        int complete = 0;
        for (const QJsonValue& upload : local_->state()["uploads"_L1].toArray())
            complete += upload["complete"_L1].toBool();
        return complete;
    }
    template <typename Window>
    static Window* topLevel() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<Window*>(widget))
                return found;
        }
        return nullptr;
    }
    static WorkspaceWindow* window() { return topLevel<WorkspaceWindow>(); }
    static PopoverWindow* popover() { return topLevel<PopoverWindow>(); } // null before it was first opened
    static bool shows(const QString& text) {
        for (const QLabel* label : window()->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text().contains(text))
                return true;
        }
        return false;
    }
    static GTMOAuth2Window* visibleSheet() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<GTMOAuth2Window*>(widget); found && found->isVisible())
                return found;
        }
        return nullptr;
    }
    QAction* visibleInMenu(const QString& text) const {
        for (QAction* action : hosts_->fake()->menu()->actions()) {
            if (action->isVisible() && action->text().remove(QLatin1Char('&')) == text)
                return action;
        }
        return nullptr;
    }
    void choose(const QString& text) const {
        QAction* const action = visibleInMenu(text);
        QVERIFY2(action && action->isEnabled(), qPrintable(text));
        action->trigger();
    }

    std::unique_ptr<LocalDriveProcess> local_;
    std::shared_ptr<ManualTimeSource> time_;
    std::shared_ptr<FakeReachability> network_;
    QTemporaryDir files_;
    std::unique_ptr<DriveConnection> drive_;
    std::unique_ptr<PlatformServices> platform_;
    FakeDefaults* defaults_ = nullptr; // these belong to the platform
    FakeCacheFolders* caches_ = nullptr;
    FakeKeyring* keyring_ = nullptr;
    FakeStatusItemHosts* hosts_ = nullptr;
    FakeAlerts* alerts_ = nullptr;
    FakeNotifications* notifications_ = nullptr;
    FakeWebViews* webViews_ = nullptr;
    FakeSingleInstance* instance_ = nullptr;
    FakeSessionEnd* sessionEnd_ = nullptr;
    FakeScreenCaptureTool* captureTool_ = nullptr;
    std::unique_ptr<AppDelegate> delegate_;
    int revivals_ = 0;
};

QTEST_MAIN(AppDelegateTest)
#include "tst_appdelegate.moc"
