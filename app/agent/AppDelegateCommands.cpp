// What the composition does when it is told to: the commands of the menus, and the windows that show what came of them.
#include "app/account/DriveConnection.h"
#include "app/agent/AppDelegate.h"
#include "core/ResourceKey.h"

namespace quenby {
namespace {

// A tray that is there shows the gauge well before.
constexpr std::chrono::milliseconds gaugePatience(500);

} // namespace

void AppDelegate::carryOut(MenuCommand command) {
    switch (command) {
    case MenuCommand::showChanges:
        return popover_.open(statusItem_.geometry());
    case MenuCommand::showQuenby:
        return bringWorkspaceToFront();
    case MenuCommand::uploadFile:
        bringWorkspaceToFront(); // the panel is a sheet of it
        return uploads_.SelectAndUploadFile(&window_);
    case MenuCommand::uploadAndShareFile:
        bringWorkspaceToFront();
        return uploads_.SelectAndUploadFileAndShare(&window_);
    case MenuCommand::captureAndUploadScreenshot:
        return captures_.captureAndUploadFile();
    case MenuCommand::uploadClipboard:
        return captures_.fetchLastFromClipBoard();
    case MenuCommand::recordScreen:
        return captures_.screenCastAction();
    case MenuCommand::showUploads:
        popover_.close();
        return queueWindow_.open();
    case MenuCommand::preferences:
        popover_.close();
        return preferences_.OpenPreferenceWindow();
    case MenuCommand::signIn:
        bringWorkspaceToFront();
        return session_.makeLoginInGoogle(&window_);
    case MenuCommand::signOut:
        return logoutUser();
    case MenuCommand::quit:
        return QuitClick();
    default: // is disabled as long as nobody carries it out
        return;
    }
}

// The web engine takes a moment to load, in which nothing is painted: at the start, the gauge goes first.
void AppDelegate::openPages() {
    if (!isGaugeAwaited_) {
        gaugePatience_.reset();
        if (session_.UserLogin())
            pages_.open(session_.webAccount(), session_.signedInUsername());
    } else if (!gaugePatience_) {
        gaugePatience_ = surroundings_.drive.timeSource()->startTimer(gaugePatience, [this] {
            isGaugeAwaited_ = false;
            openPages();
        });
    }
}

void AppDelegate::openPage(const PageOpenRecord& page) {
    popover_.close();
    if (!session_.UserLogin())
        return;
    isGaugeAwaited_ = false;
    openPages();
    bringWorkspaceToFront();
    pages_.openPage(page);
}

void AppDelegate::openOutside(const QUrl& url) {
    if (platform_.opener->openURL(url))
        return;
    platform_.pasteboard->setText(url.toString());
    tell(tr("The page could not be opened"), tr("Its address was copied instead."));
}

void AppDelegate::shareThisFile(const QString& identifier, const QString& name) {
    // The page of a sign-in that has ended would not open.
    if (!session_.UserLogin())
        return;
    popover_.close();
    shareWindows_.setAccount(session_.webAccount());
    const QString address = session_.strSHARE() + identifier;
    shareWindows_.shareThisFile(addressWithResourceKey(address, changeFeed_.resourceKeyOf(identifier)), name);
}

void AppDelegate::bringWorkspaceToFront() { window_.bringToFront(); }

bool AppDelegate::minimizeAllWindows() {
    const bool wasPopoverVisible = popover_.isVisible();
    popover_.close();
    statusItem_.redisplay();
    const bool wasWorkspaceVisible = window_.isVisible() && !window_.isMinimized();
    if (wasWorkspaceVisible)
        window_.showMinimized();
    const bool wereShareWindows = !shareWindows_.shareFileList().empty();
    shareWindows_.closeAll();
    const bool werePreferencesVisible = preferences_.minimizeWindow();
    const bool wasQueueVisible = queueWindow_.minimize();
    return wasPopoverVisible || wasWorkspaceVisible || wereShareWindows || werePreferencesVisible || wasQueueVisible;
}

// An alert of a window that is not there would not be there either.
QWidget* AppDelegate::windowForAlerts() { return window_.isVisible() && !window_.isMinimized() ? &window_ : nullptr; }

void AppDelegate::showAlert(const QString& text) { tell(text, tr("info")); }

void AppDelegate::settingsTroubled(const QString& sentence) {
    if (isLoginChecked_)
        tell(tr("Settings"), sentence);
    else
        earlyTroubles_.append(sentence); // until there is a window to show them on
}

void AppDelegate::tell(const QString& message, const QString& information) {
    platform_.alerts->show(&window_, {message, information, {}, {}});
}

void AppDelegate::refreshStatusItem() { statusItem_.createAndSetIconOfStatusBarIsInstant(u"y"); }

} // namespace quenby
