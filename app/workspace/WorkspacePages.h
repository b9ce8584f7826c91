// The workspace's tabs within the program: who is signed in to them, what they ask the rest of the program for, and
// where their downloads go.
//
// Threads: the main thread. The window and the services outlive it.
#pragma once

#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"
#include "core/TimeSource.h"
#include "workspace/downloads/Downloads.h"

#include <QObject>
#include <QPointer>

#include <memory>

namespace quenby {

class Defaults;
class DownloadsView;
class TabWebView;
class WorkspaceTabs;
class WorkspaceWindow;
struct PlatformServices;

class WorkspacePages final : public QObject {
    Q_OBJECT

public:
    WorkspacePages(WorkspaceWindow& window, PlatformServices& platform, const Endpoints& endpoints,
                   const std::shared_ptr<TimeSource>& timeSource);
    ~WorkspacePages() override;

    // Somebody is signed in: the tabs of the last run come back, unless they are there already. Those of another user
    // are forgotten.
    void open(const QString& webAccount, const QString& user);
    bool isOpen() const { return isOpen_; }
    // Nobody is signed in any more. The tabs are closed; what was kept of them is forgotten only by a sign-out.
    void suspend();
    void closeAllTabs();
    void saveAllTabDetailsToDefaults();
    void setRootFolderId(const QString& identifier);

    // In a tab of its own.
    void openPage(const PageOpenRecord& page);

    WorkspaceTabs& tabs() const { return *tabs_; }
    Downloads& downloads() { return downloads_; }

Q_SIGNALS:
    void loginAccess();
    void logoutUser();
    void bringToFront();
    void openOutsideRequested(const QUrl& url);
    void filesDropped(const QList<QByteArray>& paths);

private:
    void connectTab(TabWebView& tab);
    void fillScreen(TabWebView& tab, bool isOn);
    void leaveFullScreen();
    void connectToolBar();
    void addShortcuts();

    WorkspaceWindow& window_;
    Defaults& defaults_;
    WorkspaceTabs* tabs_;
    Downloads downloads_;
    DownloadsView* downloadsView_ = nullptr;
    QPointer<TabWebView> fullScreenTab_; // whose page fills the screen
    bool isOpen_ = false;
};

} // namespace quenby
