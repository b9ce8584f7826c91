// The tabs of the workspace: the bar, the pages below it, and what is kept of them between runs.
//
// Tabs are kept shortly after each change, so that a program that is killed loses none, and once more at the end; what
// they are called, some seconds later.
//
// Threads: the main thread. The defaults and the services outlive it.
#pragma once

#include "core/PageOpenRecord.h"
#include "workspace/tab/TabWebView.h"

#include <QWidget>

#include <memory>

class QStackedWidget;

namespace quenby {

class Defaults;
class TabBar;

class WorkspaceTabs final : public QWidget {
    Q_OBJECT

public:
    WorkspaceTabs(const TabSurroundings& surroundings, Defaults& defaults, QWidget* parent = nullptr);
    ~WorkspaceTabs() override;

    // Whose pages the tabs to come show.
    void setAccount(const QString& account) { surroundings_.profile.account = account; }
    void setUserLogin(bool isSignedIn) { UserLogin_ = isSignedIn; }
    // Where new documents are made; empty: not known yet.
    void setRootFolderId(const QString& identifier) { RootFolderId_ = identifier; }

    TabBar& tabBar() const { return *tabBar_; }
    int count() const;
    TabWebView* tabAt(int index) const;
    TabWebView* selectedTab() const; // null: there is none
    int selectedIndex() const;       // -1: there is none

    // Opens a tab at the end and loads its page; it is selected unless it is for the background.
    void AddNewTabGoogleDriveWithData(const PageOpenRecord& record, bool isInBackground = false);
    // The tabs of the last run; the one that was selected is loaded, the others when they are looked at.
    void setTabbarAccordingPreviousData();
    // At the program's end: stops all pages and keeps the tabs.
    void saveAllTabDetailsToDefaults();
    // At sign-out: also forgets what was kept.
    void closeAllTabs();
    void removeAllTabs();
    void addNewTabToTabView();
    // A new document, by the tag of a command: see NewDocuments.h.
    void OpenNewGoogle(int tag);

    void homeButtonToolbarAction();
    void backButton();
    void FwdButton();
    void reloadButton();
    // The only tab stays; lastTabClosed() says so.
    void closeTab(int index);
    void closeOtherTabs(int index);
    void selectNext(bool backward);
    // Of everything, only the selected tab's page is left.
    void setPageAlone(bool isAlone);

Q_SIGNALS:
    // Whether the selected tab can go back and forward.
    void setToolBarButton(bool canGoBack, bool canGoForward);
    void selectedTabChanged();
    void loginAccess();   // nobody is signed in, and a new tab was asked for
    void lastTabClosed(); // the window is to be closed
    void documentOpened();
    // A tab, to be connected with the rest of the program.
    void tabAdded(quenby::TabWebView* tab);
    void filesDropped(const QList<QByteArray>& paths);

private:
    void configureTabBarInitially();
    void connectTabBar();
    void connectTab(TabWebView& tab);
    TabWebView& open(const PageOpenRecord& record);
    int indexOf(const TabWebView& tab) const;
    bool shouldCloseTabViewItem(TabWebView& tab);
    void removeTab(int index);
    void refreshToolBar();
    void keepSoon();
    void keepWithin(std::chrono::milliseconds delay);
    void keepNow();

    TabSurroundings surroundings_;
    Defaults& defaults_;
    TabBar* tabBar_;
    QStackedWidget* pages_;
    bool UserLogin_ = false;
    bool isFilling_ = false; // many tabs come or go: what they look like meanwhile is nobody's business
    QString RootFolderId_;
    std::unique_ptr<Timer> keeping_;
    std::chrono::milliseconds keepingDue_{0}; // while there is one
};

} // namespace quenby
