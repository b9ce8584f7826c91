// The composition: the tabs with their account.

#include "tests/app/agent/AppDelegateStage.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabs/OldTabs.h"
#include "workspace/tabs/WorkspaceTabs.h"
#include "workspace/window/WorkspaceToolBar.h"

#include <QUrlQuery>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

class AppDelegatePagesTest : public AppDelegateStage {
    Q_OBJECT

private Q_SLOTS:
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

private:
    // Of the owner, both loaded.
    void openTwoTabs() {
        keep(keptGrant(*local_, owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
        window()->findChild<WorkspaceTabs*>()->addNewTabToTabView();
        QCOMPARE(webViews_->browsers.size(), 2U);
    }
};

QTEST_MAIN(AppDelegatePagesTest)
#include "tst_appdelegate_pages.moc"
