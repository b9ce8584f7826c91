// The workspace window: the welcome view while nobody is signed in, and otherwise the toolbar, the tabs with the
// Drive's web application, and a side panel with the account and the transfers.
//
// Threads: the main thread. Closing it hides it; it is there again with bringToFront(). The defaults outlive it: its
// place on the screen is kept there under "WorkspaceWindowGeometry", and whether the side panel is shown, and how wide,
// under "WorkspaceSidePanelShown" and "WorkspaceSidePanelWidth".
#pragma once

#include <QMainWindow>

class QAbstractItemModel;
class QMenu;
class QStackedWidget;

namespace quenby {

class AccountView;
class Defaults;
class WelcomeView;
class WorkspacePane;
class WorkspaceToolBar;

class WorkspaceWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit WorkspaceWindow(Defaults& defaults);
    ~WorkspaceWindow() override;

    WelcomeView& welcomeView() const { return *welcomeView_; }
    AccountView& accountView() const;
    WorkspaceToolBar& toolBar() const;
    // The middle of the window; the window takes it over. There is nothing before.
    void setTabs(QWidget* tabs);
    // In the side panel; the window takes it over.
    void setDownloadsView(QWidget* view);

    // Which of the two is seen; the welcome view at first.
    void showWelcome();
    void showAccount();
    bool isShowingWelcome() const;

    // All commands, within reach of either view. Not owned.
    void setCommandsMenu(QMenu* menu);
    // Where an address under the pointer is read, at the lower edge of the tabs; empty: none.
    void showAddress(const QString& address);
    // A page fills the screen: only the tabs' current page is left of the window.
    void setPageFullScreen(bool isOn);
    void FullScreenButtonToolbarAction();

    // Shows the window again if it was closed or minimised, and makes it the one in front that has the keyboard, as far
    // as the window manager allows that.
    void bringToFront();

Q_SIGNALS:
    // The window got the keyboard.
    void becameKey();
    // The user took the screen back from the page.
    void pageFullScreenLeft();

protected:
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void restorePlace();
    void keepPlace();
    void setFullScreen(bool isOn);

    Defaults& defaults_;
    QStackedWidget* views_;
    WelcomeView* welcomeView_;
    WorkspacePane* pane_;
    bool isPageFullScreen_ = false;
    bool wasFullScreen_ = false; // before the page was
};

} // namespace quenby
