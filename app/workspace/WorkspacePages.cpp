#include "app/workspace/WorkspacePages.h"

#include "platform/PlatformServices.h"
#include "workspace/downloads/DownloadsView.h"
#include "workspace/tab/TabWebView.h"
#include "workspace/tabs/OldTabs.h"
#include "workspace/tabs/WorkspaceTabs.h"
#include "workspace/window/WorkspaceToolBar.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QAction>
#include <QShortcut>
#include <QStandardPaths>

namespace quenby {
namespace {

constexpr qsizetype longestShownAddress = 1000; // characters; an address may hold a whole file

TabSurroundings tabSurroundings(PlatformServices& platform, const Endpoints& endpoints,
                                const std::shared_ptr<TimeSource>& timeSource) {
    return {*platform.webViews, WebViewProfile{.account = {}, .userAgent = TabWebView::userAgent()}, endpoints,
            timeSource, QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)};
}

} // namespace

WorkspacePages::WorkspacePages(WorkspaceWindow& window, PlatformServices& platform, const Endpoints& endpoints,
                               const std::shared_ptr<TimeSource>& timeSource)
    : window_(window)
    , defaults_(*platform.defaults)
    , tabs_(new WorkspaceTabs(tabSurroundings(platform, endpoints, timeSource), *platform.defaults))
    , downloads_({*platform.filePanels, *platform.fileBrowser, *platform.alerts,
                  QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)},
                 timeSource, [this] { return &window_; }) {
    window_.setTabs(tabs_);
    downloadsView_ = new DownloadsView(downloads_);
    window_.setDownloadsView(downloadsView_);
    connect(tabs_, &WorkspaceTabs::loginAccess, this, &WorkspacePages::loginAccess);
    connect(tabs_, &WorkspaceTabs::documentOpened, this, &WorkspacePages::bringToFront);
    connect(tabs_, &WorkspaceTabs::filesDropped, this, &WorkspacePages::filesDropped);
    connect(tabs_, &WorkspaceTabs::lastTabClosed, &window_, &QWidget::close);
    connect(&window_, &WorkspaceWindow::pageFullScreenLeft, this, &WorkspacePages::leaveFullScreen);
    connect(tabs_, &WorkspaceTabs::selectedTabChanged, this, [this] {
        if (fullScreenTab_ && fullScreenTab_ != tabs_->selectedTab())
            leaveFullScreen();
    });
    connect(tabs_, &WorkspaceTabs::tabAdded, this, [this](TabWebView* tab) { connectTab(*tab); });
    connectToolBar();
    addShortcuts();
}

// The window outlives this; what it shows of this does not.
WorkspacePages::~WorkspacePages() {
    tabs_->disconnect(this);
    delete tabs_;
    delete downloadsView_;
}

// --- The account ----------------------------------------------------------------------------------------------------

void WorkspacePages::open(const QString& webAccount, const QString& user) {
    if (std::exchange(isOpen_, true))
        return;
    if (const QString before = readUserOfOldTabs(defaults_); !before.isEmpty() && before != user)
        closeAllTabs();
    isOpen_ = true;
    writeUserOfOldTabs(defaults_, user);
    tabs_->setAccount(webAccount);
    tabs_->setUserLogin(true);
    tabs_->setTabbarAccordingPreviousData();
}

void WorkspacePages::suspend() {
    if (!std::exchange(isOpen_, false))
        return;
    tabs_->setUserLogin(false);
    tabs_->saveAllTabDetailsToDefaults();
    tabs_->removeAllTabs();
}

void WorkspacePages::closeAllTabs() {
    isOpen_ = false;
    tabs_->setUserLogin(false);
    tabs_->closeAllTabs();
    downloads_.forgetEverything();
}

void WorkspacePages::saveAllTabDetailsToDefaults() { tabs_->saveAllTabDetailsToDefaults(); }

void WorkspacePages::setRootFolderId(const QString& identifier) { tabs_->setRootFolderId(identifier); }

void WorkspacePages::openPage(const PageOpenRecord& page) { tabs_->AddNewTabGoogleDriveWithData(page); }

// --- Who is told of what --------------------------------------------------------------------------------------------

void WorkspacePages::connectTab(TabWebView& tab) {
    connect(&tab, &TabWebView::openOutsideRequested, this, &WorkspacePages::openOutsideRequested);
    connect(&tab, &TabWebView::logOutRequested, this, &WorkspacePages::logoutUser);
    connect(&tab, &TabWebView::downloadBegun, &downloads_, &Downloads::downloadDidBegin);
    connect(&tab, &TabWebView::fullScreenRequested, this, [this, &tab](bool isOn) { fillScreen(tab, isOn); });
    connect(&tab, &TabWebView::linkHovered, &window_, [this](const QUrl& url) {
        window_.showAddress(url.toDisplayString(QUrl::RemoveUserInfo).left(longestShownAddress));
    });
}

// Only a page that is seen may do so, and only as long as it is.
void WorkspacePages::fillScreen(TabWebView& tab, bool isOn) {
    if (!isOn) {
        if (fullScreenTab_ != &tab)
            return;
        fullScreenTab_.clear(); // it knows
        return leaveFullScreen();
    }
    if (tabs_->selectedTab() != &tab)
        return tab.leaveFullScreen();
    fullScreenTab_ = &tab;
    tabs_->setPageAlone(true);
    window_.setPageFullScreen(true);
}

void WorkspacePages::leaveFullScreen() {
    if (TabWebView* tab = std::exchange(fullScreenTab_, nullptr))
        tab->leaveFullScreen();
    tabs_->setPageAlone(false);
    window_.setPageFullScreen(false);
}

void WorkspacePages::connectToolBar() {
    WorkspaceToolBar& bar = window_.toolBar();
    const auto on = [&bar, this](ToolBarCommand command, auto what) {
        connect(bar.action(command), &QAction::triggered, tabs_, what);
    };
    on(ToolBarCommand::home, &WorkspaceTabs::homeButtonToolbarAction);
    on(ToolBarCommand::back, &WorkspaceTabs::backButton);
    on(ToolBarCommand::forward, &WorkspaceTabs::FwdButton);
    on(ToolBarCommand::reload, &WorkspaceTabs::reloadButton);
    connect(&bar, &WorkspaceToolBar::OpenNewGoogle, tabs_, &WorkspaceTabs::OpenNewGoogle);
    connect(tabs_, &WorkspaceTabs::setToolBarButton, &bar, &WorkspaceToolBar::setToolBarButton);
}

void WorkspacePages::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, auto what) {
        auto* shortcut = new QShortcut(keys, tabs_);
        connect(shortcut, &QShortcut::activated, tabs_, what);
    };
    const auto onTab = [this](void (TabWebView::*what)()) {
        return [this, what] {
            if (TabWebView* tab = tabs_->selectedTab())
                (tab->*what)();
        };
    };
    add(QKeySequence(Qt::CTRL | Qt::Key_T), [this] { tabs_->addNewTabToTabView(); });
    add(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { tabs_->closeTab(tabs_->selectedIndex()); });
    add(QKeySequence(Qt::CTRL | Qt::Key_Tab), [this] { tabs_->selectNext(false); });
    add(QKeySequence(Qt::CTRL | Qt::Key_PageDown), [this] { tabs_->selectNext(false); });
    add(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab), [this] { tabs_->selectNext(true); });
    add(QKeySequence(Qt::CTRL | Qt::Key_PageUp), [this] { tabs_->selectNext(true); });
    add(QKeySequence(Qt::CTRL | Qt::Key_R), [this] { tabs_->reloadButton(); });
    add(QKeySequence(Qt::Key_F5), [this] { tabs_->reloadButton(); });
    add(QKeySequence(Qt::ALT | Qt::Key_Left), [this] { tabs_->backButton(); });
    add(QKeySequence(Qt::ALT | Qt::Key_Right), [this] { tabs_->FwdButton(); });
    add(QKeySequence::Find, onTab(&TabWebView::showFind));
    add(QKeySequence::Print, onTab(&TabWebView::print));
    add(QKeySequence(Qt::CTRL | Qt::Key_Plus), onTab(&TabWebView::zoomIn));
    add(QKeySequence(Qt::CTRL | Qt::Key_Equal), onTab(&TabWebView::zoomIn));
    add(QKeySequence(Qt::CTRL | Qt::Key_Minus), onTab(&TabWebView::zoomOut));
    add(QKeySequence(Qt::CTRL | Qt::Key_0), onTab(&TabWebView::zoomReset));
}

} // namespace quenby
