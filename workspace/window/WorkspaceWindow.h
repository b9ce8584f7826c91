// The workspace window: the welcome view while nobody is signed in, and the account's view otherwise.
//
// Threads: the main thread. Closing it hides it; it is there again with bringToFront(). The defaults outlive it: its
// place on the screen is kept there under "WorkspaceWindowGeometry".
#pragma once

#include <QMainWindow>

class QMenu;
class QStackedWidget;

namespace quenby {

class AccountView;
class Defaults;
class WelcomeView;

class WorkspaceWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit WorkspaceWindow(Defaults& defaults);
    ~WorkspaceWindow() override;

    WelcomeView& welcomeView() const { return *welcomeView_; }
    AccountView& accountView() const { return *accountView_; }

    // Which of the two is seen; the welcome view at first.
    void showWelcome();
    void showAccount();
    bool isShowingWelcome() const;

    // All commands, within reach of either view. Not owned.
    void setCommandsMenu(QMenu* menu);

    // Shows the window again if it was closed or minimised, and makes it the one in front that has the keyboard, as far
    // as the window manager allows that.
    void bringToFront();

Q_SIGNALS:
    // The window got the keyboard.
    void becameKey();

protected:
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void restorePlace();
    void keepPlace();

    Defaults& defaults_;
    QStackedWidget* views_;
    WelcomeView* welcomeView_;
    AccountView* accountView_;
};

} // namespace quenby
