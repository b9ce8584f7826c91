#include "preferences/window/PreferenceWindowController.h"

#include "preferences/account/AccountPane.h"
#include "preferences/account/OwnClient.h"
#include "preferences/account/OwnClientDialog.h"
#include "preferences/general/ScreenshotFoldersDialog.h"
#include "preferences/shortcut/CustomShortcut.h"
#include "preferences/window/PreferenceWindow.h"

#include <utility>

namespace quenby {
namespace {

void openOnce(QDialog* dialog) {
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

} // namespace

PreferenceWindowController::PreferenceWindowController(const Services& services)
    : services_(services)
    , screenshotFolder_(services.defaults, services.filePanels)
    , window_(std::make_unique<PreferenceWindow>())
    , ui_(*window_,
          {services.defaults, services.shortcut, screenshotFolder_, services.noShortcutsBecause,
           services.placeDecidedBy},
          services.facts, services.opener) {
    windowDidLoad();
}

PreferenceWindowController::~PreferenceWindowController() = default;

void PreferenceWindowController::windowDidLoad() {
    connect(window_.get(), &PreferenceWindow::closed, this, &PreferenceWindowController::windowClosed);
    connect(ui_.generalView, &GeneralPane::screenshotFoldersRequested, this,
            &PreferenceWindowController::showScreenshotFolders);
    connect(ui_.accountView, &AccountPane::logout_click, this, &PreferenceWindowController::logout_click);
    connect(ui_.accountView, &AccountPane::signInRequested, this, &PreferenceWindowController::signInRequested);
    connect(ui_.accountView, &AccountPane::signInAgainRequested, this, &PreferenceWindowController::signInAgain);
    connect(ui_.accountView, &AccountPane::ownClientRequested, this, &PreferenceWindowController::showOwnClient);
    connect(ui_.aboutView, &AboutPane::copyDiagnosticsRequested, this,
            &PreferenceWindowController::copyDiagnosticsRequested);
    ui_.accountView->setOwnClientRefused(services_.ownClients.decidedElsewhere());
    generalClick();
    window_->moveToMiddle();
    // The setting is what switches it on; what another program held may be free by now.
    services_.shortcut.resetShortcutRegistration();
}

void PreferenceWindowController::show() {
    setValue();
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

bool PreferenceWindowController::isVisible() const { return window_->isVisible(); }
bool PreferenceWindowController::isMinimized() const { return window_->isMinimized(); }
void PreferenceWindowController::minimize() { window_->showMinimized(); }
QWidget* PreferenceWindowController::window() const { return window_.get(); }

void PreferenceWindowController::setValue() {
    ui_.generalView->setValue();
    window_->fitToPane();
}

// --- The toolbar's items --------------------------------------------------------------------------------------------

void PreferenceWindowController::generalClick() { window_->showPane(PreferenceWindowUi::general); }
void PreferenceWindowController::accountClick() { window_->showPane(PreferenceWindowUi::account); }
void PreferenceWindowController::aboutClick() { window_->showPane(PreferenceWindowUi::about); }

// --- The shortcut ---------------------------------------------------------------------------------------------------

bool PreferenceWindowController::isShortcutEnabled() const { return services_.shortcut.isShortcutEnabled(); }

void PreferenceWindowController::setShortcutEnabled(bool isEnabled) {
    services_.shortcut.setShortcutEnabled(isEnabled);
}

// --- The account ----------------------------------------------------------------------------------------------------

void PreferenceWindowController::setAccount(const AccountDisplay& account, bool isSignedIn) {
    ui_.accountView->setAccount(account, isSignedIn);
}

void PreferenceWindowController::setAccess(const std::optional<DriveAccess>& granted) {
    ui_.accountView->setAccess(granted);
}

void PreferenceWindowController::setUsage(const std::optional<AccountUsage>& usage) {
    ui_.accountView->setUsage(usage);
}

void PreferenceWindowController::setPicture(const QImage& picture) { ui_.accountView->setPicture(picture); }

void PreferenceWindowController::diagnosticsCopied(const QString& trouble) {
    ui_.aboutView->diagnosticsCopied(trouble);
}

void PreferenceWindowController::logout_click() {
    window_->close();
    Q_EMIT logoutUser();
}

void PreferenceWindowController::signInAgain() {
    window_->close();
    Q_EMIT signInAgainRequested();
}

// --- Windows --------------------------------------------------------------------------------------------------------

void PreferenceWindowController::showScreenshotFolders() {
    openOnce(new ScreenshotFoldersDialog(services_.defaults, services_.filePanels, services_.screenshotQuery,
                                         window_.get()));
}

void PreferenceWindowController::showOwnClient() {
    openOnce(new OwnClientDialog(services_.ownClients, services_.filePanels, services_.opener, window_.get()));
}

// Through the event loop: whoever hears of it may delete this object.
void PreferenceWindowController::windowClosed() {
    if (!std::exchange(isClosed_, true))
        QMetaObject::invokeMethod(this, &PreferenceWindowController::closed, Qt::QueuedConnection);
}

} // namespace quenby
