#include "app/agent/Preferences.h"

#include "app/account/AccountUsage.h"
#include "app/account/DriveConnection.h"
#include "app/diagnostics/ProgramVersion.h"
#include "app/session/AccountDetails.h"
#include "app/session/AccountSession.h"
#include "platform/PlatformServices.h"
#include "preferences/account/OwnClientDialog.h"
#include "preferences/window/PreferenceWindowController.h"

namespace quenby {

Preferences::Preferences(const Surroundings& surroundings)
    : surroundings_(surroundings)
    , platform_(surroundings.platform)
    , shortcut_(*platform_.globalShortcuts, *platform_.defaults)
    , loginItem_(*platform_.loginItem, *platform_.defaults)
    , itemPlace_(*platform_.statusItemHosts, *platform_.defaults,
                 surroundings.placeDecidedBy.isEmpty() ? StatusItemPlaceSetting::DecidedBy::setting
                                                       : StatusItemPlaceSetting::DecidedBy::commandLine)
    , client_(surroundings.drive, surroundings.session, *platform_.defaults)
    , access_(surroundings.drive, *platform_.defaults)
    , picture_(surroundings.drive, surroundings.details)
    , diagnostics_({surroundings.platform, surroundings.drive, surroundings.session, surroundings.details,
                    programVersion() + QStringLiteral(" (") + programBuild() + QLatin1Char(')')}) {
    connect(&shortcut_, &CustomShortcut::ShowMainWindow, this, &Preferences::ShowMainWindow);
    connect(&loginItem_, &LoginItemSwitch::failed, this, &Preferences::tellLoginItemFailed);
    connect(&client_, &ClientChoice::clientChanged, this, &Preferences::clientChanged);
    connect(&picture_, &AccountPicture::changed, this, &Preferences::showAccountDetails);
    connect(&surroundings_.details, &AccountDetails::changed, this, &Preferences::showAccountDetails);
}

Preferences::~Preferences() = default;

void Preferences::begin(bool isFirstLogin) {
    loginItem_.begin(isFirstLogin);
    shortcut_.resetShortcutRegistration();
}

void Preferences::OpenPreferenceWindow() {
    preference_.reset(); // a fresh one
    preference_ = std::make_unique<PreferenceWindowController>(PreferenceWindowController::Services{
        *platform_.defaults, *platform_.filePanels, *platform_.opener, *platform_.screenshotQuery, shortcut_, client_,
        ProgramFacts{surroundings_.icon, QStringLiteral("Quenby"), programVersion(), programBuild(),
                     programCopyright()},
        platform_.globalShortcuts->unavailableBecause(), surroundings_.placeDecidedBy});
    connectWindow();
    preference_->show();
    Q_EMIT accountDataWanted();
    picture_.fetch();
}

void Preferences::connectWindow() {
    PreferenceWindowController* const window = preference_.get();
    connect(window, &PreferenceWindowController::logoutUser, this, &Preferences::logoutUser);
    connect(window, &PreferenceWindowController::signInRequested, this, &Preferences::signInRequested);
    connect(window, &PreferenceWindowController::signInAgainRequested, this, &Preferences::signInAgainRequested);
    connect(window, &PreferenceWindowController::copyDiagnosticsRequested, this, &Preferences::copyDiagnostics);
}

bool Preferences::minimizeWindow() {
    if (!preference_ || !preference_->isVisible() || preference_->isMinimized())
        return false;
    preference_->minimize();
    return true;
}

void Preferences::leaveAccount() {
    picture_.clear();
    client_.take();
}

void Preferences::showOwnClient(QWidget* window) {
    if (!ownClientSheet_) {
        ownClientSheet_ = new OwnClientDialog(client_, *platform_.filePanels, *platform_.opener, window);
        ownClientSheet_->setAttribute(Qt::WA_DeleteOnClose);
        ownClientSheet_->open();
    }
    ownClientSheet_->raise();
    ownClientSheet_->activateWindow();
}

void Preferences::setAccount(const AccountDisplay& account) {
    if (!preference_)
        return;
    preference_->setAccount(account, surroundings_.session.UserLogin());
    if (access_.isOffered())
        preference_->setAccess(surroundings_.drive.accessIn(surroundings_.session.grantedScope()));
    if (preference_->isVisible())
        picture_.fetch(); // also that of whoever signed in while the window was open
    showAccountDetails();
}

void Preferences::showAccountDetails() {
    if (!preference_)
        return;
    const auto& about = surroundings_.details.DriveInfoAPI();
    preference_->setUsage(about ? std::optional(accountUsage(*about)) : std::nullopt);
    preference_->setPicture(picture_.picture());
}

void Preferences::tellLoginItemFailed(const QString& informativeText, const QString& details) {
    QWidget* const window = preference_ && preference_->isVisible() ? preference_->window() : nullptr;
    platform_.alerts->show(window, {QStringLiteral("Error"), informativeText, details, {QStringLiteral("Ok")}});
}

void Preferences::copyDiagnostics() {
    diagnosticsTicket_ = diagnostics_.collect(this, [this](const QString& text) {
        platform_.pasteboard->setText(text);
        if (preference_)
            preference_->diagnosticsCopied({});
    });
}

} // namespace quenby
