#include "app/agent/AppDelegate.h"

#include "app/account/DriveConnection.h"
#include "app/agent/CacheFolderNames.h"
#include "app/agent/DefaultsTable.h"
#include "app/agent/HandoverLines.h"
#include "app/session/SignInAdvice.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/GTMHTTPFetcherService.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/WelcomeView.h"

#include <QLoggingCategory>

#include <utility>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(appLog, "quenby.app")

// A keyring that is open answers well before.
constexpr std::chrono::seconds keyringPatience(1);

} // namespace

// --- Launch and end -------------------------------------------------------------------------------------------------

void AppDelegate::applicationWillFinishLaunching() {
    // The upload state and the lists begin empty with the objects that hold them.
    platform_.singleInstance->setHandover([this] { return handOver(); });
    connect(platform_.singleInstance.get(), &SingleInstance::endRequested, this, [this] {
        isSucceeded_ = true; // also by one that did not wait for what would have been handed over
        Q_EMIT quitRequested();
    });
    connect(platform_.sessionEnd.get(), &SessionEnd::endRequested, this, &AppDelegate::quitRequested);
    captures_.beginWatching();
}

void AppDelegate::applicationDidFinishLaunching() {
    platform_.singleInstance->acquire(this, [this](const Handover& handover) { becameSingleInstance(handover); });
}

void AppDelegate::becameSingleInstance(const Handover& handover) {
    preferences_.begin(CheckDefaultsValue(*platform_.defaults));
    platform_.cacheFolders->remove(cacheFolderName::images);
    if (const auto images = platform_.cacheFolders->create(cacheFolderName::images); !images)
        qCWarning(appLog, "%s", qPrintable(images.error().description()));

    openFromDocList_ = filesFromHandover(handover) + openFromDocList_;
    // From here on nobody else writes into it.
    if (uploadJournal_)
        uploads_.queue().setJournal(*uploadJournal_);

    loginAccess();
    platform_.statusItemHosts->start();
    statusItem_.createAndSetIconOfStatusBarIsInstant(u"n");
    captures_.findInterruptedRecordings();
    isLaunched_ = true;
}

bool AppDelegate::applicationShouldHandleReopen() {
    bringWorkspaceToFront();
    return true;
}

void AppDelegate::application_openFiles(const QList<QByteArray>& paths) {
    openFromDocList_ = paths;
    if (session_.UserLogin())
        uploadPendingFiles();
}

void AppDelegate::QuitClick() {
    if (session_.preventsApplicationTermination()) {
        bringWorkspaceToFront();
        session_.callToSignIn(tr("To quit Quenby, finish the sign-in or cancel it first."));
        return;
    }
    if (!captures_.isRecording()) {
        Q_EMIT quitRequested();
        return;
    }
    if (quitQuestion_.isPending()) {
        if (isQuitAskedInWindow_) // it may have been minimised since, and the question with it
            bringWorkspaceToFront();
        return;
    }
    isQuitAskedInWindow_ = windowForAlerts() != nullptr;
    quitQuestion_ = platform_.alerts->show(windowForAlerts(),
                                           {tr("A capture is not finished yet"),
                                            tr("A recording is still being made or saved. Quitting ends that."),
                                            {},
                                            {tr("Quit"), tr("Cancel")}},
                                           this, [this](int button) {
                                               if (button == 0)
                                                   Q_EMIT quitRequested();
                                           });
}

void AppDelegate::applicationWillTerminate() {
    pages_.saveAllTabDetailsToDefaults();
    // What lies in the folders is another program's: of the next one, or, before the launch, of the last one.
    if (isSucceeded_ || !isLaunched_)
        return;
    captures_.removeFiles();
    for (const QString& name : {cacheFolderName::images, cacheFolderName::copiedPictures})
        platform_.cacheFolders->remove(name);
}

// What the next program is given is not finished here as well.
Handover AppDelegate::handOver() {
    uploads_.release();
    return handoverFromFiles(openFromDocList_);
}

// --- The account ----------------------------------------------------------------------------------------------------

void AppDelegate::loginAccess() {
    window_.welcomeView().showWaiting(tr("Waiting for the keyring…"));
    // Whoever has to unlock it first, or waits for one that hangs, sees why nothing else happens.
    keyringPatience_ = surroundings_.drive.timeSource()->startTimer(keyringPatience, [this] {
        if (!surroundings_.startsHidden)
            bringWorkspaceToFront();
    });
    session_.loginCheck(this, [this](const MaybeError& keyringTrouble) { loginChecked(keyringTrouble); });
}

void AppDelegate::loginChecked(const MaybeError& keyringTrouble) {
    keyringPatience_.reset();
    setDisplayDataIfAvail();
    QList<Alert> alerts;
    for (const QString& sentence : std::exchange(earlyTroubles_, {}))
        alerts.append({tr("Settings"), sentence, {}, {}});
    isLoginChecked_ = true;
    if (session_.isSignedIn()) {
        if (!surroundings_.startsHidden)
            bringWorkspaceToFront();
        for (const Alert& alert : std::as_const(alerts))
            platform_.alerts->show(&window_, alert);
        becameSignedIn();
        return Drive_Open();
    }
    window_.showWelcome();
    bringWorkspaceToFront();
    if (keyringTrouble) {
        qCWarning(appLog, "The sign-in is not to be had: %s", qPrintable(keyringTrouble->description()));
        window_.welcomeView().showTrouble(keyringTrouble->detail(errorKey::reason).toString());
    } else {
        window_.welcomeView().showReady();
    }
    const auto goOn = [this, isAskedFor = !keyringTrouble] {
        // Where there is something to choose first, the user begins it.
        if (isAskedFor && !preferences_.access().isOffered())
            session_.makeLoginInGoogle(&window_);
        else
            captures_.showInterruptedRecordings();
    };
    if (launchAlert_.isPending())
        return;
    if (!openFromDocList_.isEmpty())
        alerts.append({tr("No login, please try again"), tr("info"), {}, {}});
    if (alerts.isEmpty())
        return goOn();
    // The dialog would cover them: it comes when the last one has been read.
    const Alert last = alerts.takeLast();
    for (const Alert& alert : std::as_const(alerts))
        platform_.alerts->show(&window_, alert);
    launchAlert_ = platform_.alerts->show(&window_, last, this, [goOn](int) { goOn(); });
}

void AppDelegate::becameSignedIn() {
    keyringPatience_.reset();
    isSignInRefused_ = false;
    surroundings_.drive.pictureFetcherService()->setAuthorizer(surroundings_.drive.driveService()->authorizer());
    account_ = session_.signedInUsername() + QStringLiteral(" (") + surroundings_.drive.endpoints().keychainItemName +
               QLatin1Char(')');
    uploadPendingFiles();
    captures_.showInterruptedRecordings();
}

void AppDelegate::Drive_Open() {
    if (!session_.UserLogin())
        return;
    openPages();
    if (window_.isShowingWelcome())
        window_.showAccount();
    setDisplayDataIfAvail();
    details_.GetDetailOfUserDrive();
}

void AppDelegate::accountFailed(const Error& error) {
    qCWarning(appLog, "An error occurred: %s", qPrintable(error.description()));
    const SignInAdvice advice = signInAdvice(error);
    accountTrouble_ = advice.needsUser ? advice.sentence : tr("The Drive does not answer; Quenby goes on trying.");
    reopening_.failed();
    surroundings_.reviveDrive();
    setDisplayDataIfAvail();
}

void AppDelegate::signInEnded(const MaybeError& error) {
    if (error) {
        qCWarning(appLog, "The sign-in failed: %s", qPrintable(error->description()));
        isSignInRefused_ = true; // trying again means to sign in
        window_.welcomeView().showTrouble(signInAdvice(*error).sentence);
    } else if (!session_.UserLogin()) {
        window_.welcomeView().showReady();
    }
    captures_.showInterruptedRecordings();
    refreshStatusItem();
}

// One that has begun asks for what was chosen before.
void AppDelegate::beginSignInAnew() {
    if (!session_.UserLogin() && session_.endSignIn())
        session_.makeLoginInGoogle(&window_);
}

void AppDelegate::signInRefused() {
    isSignInRefused_ = true;
    uploads_.hold();
    pages_.suspend();
    leaveAccount();
    window_.welcomeView().showTrouble(
        tr("The Drive no longer accepts the sign-in. Sign in again to go on; waiting uploads will continue."));
    bringWorkspaceToFront();
    refreshStatusItem();
}

void AppDelegate::logoutUser() {
    const qsizetype running = uploads_.remaining().size();
    if (running == 0)
        return logOut();
    if (signOutQuestion_.isPending())
        return;
    bringWorkspaceToFront();
    const QString files = running == 1 ? tr("One file is") : tr("%1 files are").arg(running);
    signOutQuestion_ = platform_.alerts->show(
        &window_,
        {tr("Uploads are still running"),
         files + tr(" not in the Drive yet. Signing out cancels that; the files stay on this computer."),
         {},
         {tr("Sign Out"), tr("Cancel")}},
        this, [this](int button) {
            if (button != 0)
                preferences_.keepFormerClient();
            else if (session_.UserLogin())
                logOut();
        });
}

void AppDelegate::logOut() {
    uploads_.cancelEverything();
    uploads_.hold();
    pages_.closeAllTabs(); // before the cookies of their pages go
    session_.makeLogoutFromGoogle(this, [this] {
        if (!session_.UserLogin()) // somebody may have been faster than the keyring
            loginAccess();
    });
    leaveAccount();
    window_.welcomeView().showReady();
    refreshStatusItem();
}

// What is known of the account is forgotten; the sign-in itself is the session's.
void AppDelegate::leaveAccount() {
    shareWindows_.closeAll();
    captures_.leaveAccount();
    preferences_.leaveAccount();
    changeFeed_.clear();
    changeNotices_.clear();
    pictures_.clear();
    surroundings_.drive.pictureFetcherService()->setAuthorizer(nullptr);
    details_.clear();
    pages_.setRootFolderId(details_.RootFolderId());
    reopening_.succeeded();
    accountTrouble_.clear();
    window_.welcomeView().setOwnClient(preferences_.ownClient());
    window_.showWelcome();
    setDisplayDataIfAvail();
}

void AppDelegate::setDisplayDataIfAvail() {
    AccountDisplay display;
    display.quota = quotaLine(inputs_);
    if (const auto& summary = details_.dicUserData()) {
        display.userName = summary->displayName;
        display.accountName = summary->emailAddress;
        display.percentUsed = summary->getBytesUsed.chopped(1).toInt(); // without the sign
    } else if (session_.isSignedIn()) {
        display.userName = tr("Fetching...");
        display.accountName = session_.signedInUsername();
        if (!accountTrouble_.isEmpty())
            display.quota = accountTrouble_;
    } else {
        display.userName = display.accountName = tr("No User Login");
    }
    window_.accountView().setAccount(display);
    popover_.setAccount(display);
    preferences_.setAccount(display);
    menus_.refresh();
}

// --- Files that wait ------------------------------------------------------------------------------------------------

void AppDelegate::uploadPendingFiles() {
    uploads_.queue().setAccount(account_);
    if (!openFromDocList_.isEmpty())
        uploads_.UploadFilesToServer(std::exchange(openFromDocList_, {}));
    askAboutOtherAccounts();
}

void AppDelegate::askAboutOtherAccounts() {
    const UploadQueue& queue = uploads_.queue();
    const qsizetype count = queue.otherCount();
    if (count == 0 || !session_.UserLogin() || otherAccountQuestion_.isPending() || othersKeptBeside_ == account_)
        return;
    const QString files = count == 1 ? tr("One file was") : tr("%1 files were").arg(count);
    otherAccountQuestion_ = platform_.alerts->show(
        &window_,
        {tr("Uploads for another account"),
         files + tr(" on the way to the Drive of %1. Now %2 is signed in. Upload to this Drive instead?")
                     .arg(queue.otherAccounts().join(tr(" and ")), account_),
         {},
         {tr("Upload Here"), tr("Keep for Later"), tr("Don't Upload")}},
        this, [this, asked = account_](int button) { otherAccountAnswered(asked, button); });
}

void AppDelegate::otherAccountAnswered(const QString& askedFor, int button) {
    // Who is signed in may have changed in front of the question.
    if (!session_.UserLogin())
        return;
    if (account_ != askedFor)
        return askAboutOtherAccounts();
    if (button == 0)
        uploads_.queue().adoptOthers();
    else if (button == 2)
        uploads_.queue().forgetOthers();
    else
        othersKeptBeside_ = account_; // until the next start they wait without another word
}

} // namespace quenby
