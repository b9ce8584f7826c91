// The desktop program with a local Drive of its own, and what somebody at the virtual desktop does with it and sees.
//
// Threads: the main thread. The calls run the event loop while they wait, and give up after QuenbyProcess::patience.
#pragma once

#include "tests/desktop/support/DesktopInput.h"
#include "tests/desktop/support/QuenbyProcess.h"
#include "tests/support/LocalDriveProcess.h"

#include <functional>

namespace quenby::testing {

class AgentStage {
public:
    // The local Drive and the program do not run yet.
    AgentStage();

    LocalDriveProcess drive;
    QuenbyHome home;
    QuenbyProcess quenby;
    DesktopInput input;

    // For init() and cleanup() of a test whose functions stand on each other: after one that failed the others are left
    // out; and what can be seen of a failure is kept.
    void skipAfterFailure();
    void afterTest();

    // --- Signing in -------------------------------------------------------------------------------------------------

    // Waits for the dialog and for the button on the local Drive's page; 0 when they do not come.
    WindowId waitForSignInPage();
    // Waits for the page, allows what it asks with the keyboard, and waits until the dialog has gone.
    bool allowSignIn();
    // Starts the program, signs in, and waits until the status item and the account are there.
    bool startAndSignIn();
    // Starts the program again; what it had is still there.
    bool startSignedIn(const QStringList& arguments = {});
    // What the keyring holds, which must not be locked; empty when there is no such entry.
    QByteArray keptSignIn();
    // How often somebody has allowed or refused on the page.
    int answeredPages();

    // --- Windows ----------------------------------------------------------------------------------------------------

    // The workspace window, or 0.
    WindowId window();
    WindowId waitForWindow();
    // An alert, or 0.
    WindowId alert();
    WindowId waitForAlert();
    // By Escape.
    bool dismissAlert();
    // What "Show Details..." shows in it.
    QString detailsOfAlert();
    // Whether the main button of a page of the local Drive can be seen there.
    bool showsPageButton(WindowId window);

    // --- Menus and panels -------------------------------------------------------------------------------------------

    // Waits for the menu that this opens, and presses these keys in it. False when there is no menu.
    bool chooseFromMenu(const std::function<void()>& open, const QStringList& keys);
    bool chooseFromItemMenu(const QPoint& item, const QStringList& keys);
    bool chooseFromWindowMenu(const QStringList& keys);
    // Waits for the panel, types the path and presses Return; false when the panel does not come or does not go.
    bool fillPanel(const QString& title, const QString& path);

    // --- What is kept
    // --------------------------------------------------------------------------------------------------

    // How many files of this title the Drive has.
    int countInDrive(const QString& title);
    // Whether the settings file has this line.
    bool isSet(const QByteArray& line) const;

private:
    bool hasFailed_ = false;
};

} // namespace quenby::testing
