// The preferences window: three panes behind a toolbar, each with its own height. A controller is one window: a fresh
// one is made for every opening.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/AccountDisplay.h"
#include "core/AccountUsage.h"
#include "core/DriveAccess.h"
#include "preferences/about/AboutPane.h"
#include "preferences/general/ScreenshotFolder.h"
#include "preferences/window/PreferenceWindowUi.h"

#include <QImage>
#include <QObject>

#include <memory>
#include <optional>

namespace quenby {

class CustomShortcut;
class Defaults;
class FilePanels;
class OwnClients;
class PreferenceWindow;
class ScreenshotQuery;

class PreferenceWindowController : public QObject {
    Q_OBJECT

public:
    struct Services {
        Defaults& defaults;
        FilePanels& filePanels;
        Opener& opener;
        const ScreenshotQuery& screenshotQuery;
        CustomShortcut& shortcut;
        OwnClients& ownClients;
        ProgramFacts facts;
        QString noShortcutsBecause; // see GeneralPane
        QString placeDecidedBy;
    };

    explicit PreferenceWindowController(const Services& services);
    ~PreferenceWindowController() override;

    // On the screen, in front, with the keyboard, every control brought up to date.
    void show();
    bool isVisible() const;
    bool isMinimized() const;
    void minimize();
    QWidget* window() const;

    // Refreshes the controls, and fits the window to its pane.
    void setValue();
    void generalClick();
    void accountClick();
    void aboutClick();

    bool isShortcutEnabled() const;
    void setShortcutEnabled(bool isEnabled);

    void setAccount(const AccountDisplay& account, bool isSignedIn);
    // Of the sign-in; see AccountPane.
    void setAccess(const std::optional<DriveAccess>& granted);
    void setUsage(const std::optional<AccountUsage>& usage);
    void setPicture(const QImage& picture);
    void diagnosticsCopied(const QString& trouble);

Q_SIGNALS:
    // The window has closed itself before.
    void logoutUser();
    void signInAgainRequested();
    void signInRequested();
    void copyDiagnosticsRequested();
    // Once; through the event loop, and so after whatever was requested.
    void closed();

private:
    void windowDidLoad();
    void logout_click();
    void signInAgain();
    void showScreenshotFolders();
    void showOwnClient();
    void windowClosed();

    const Services services_;
    ScreenshotFolder screenshotFolder_;
    const std::unique_ptr<PreferenceWindow> window_;
    const PreferenceWindowUi ui_;
    bool isClosed_ = false;
};

} // namespace quenby
