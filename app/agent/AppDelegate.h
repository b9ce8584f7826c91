// The desktop program's composition: one object per concern, put together in one place, started and ended in a fixed
// order. What each concern does is told in its own header; what is here is which of them hears of what.
//
// Threads: the main thread.
#pragma once

#include "app/agent/AccountInputs.h"
#include "app/agent/Captures.h"
#include "app/agent/ChangesPopover.h"
#include "app/agent/Preferences.h"
#include "app/agent/UploadListing.h"
#include "app/changes/ChangeFeed.h"
#include "app/changes/ChangeNotices.h"
#include "app/pictures/FetchedPictures.h"
#include "app/queuewindow/QueueWindow.h"
#include "app/session/AccountDetails.h"
#include "app/session/AccountSession.h"
#include "app/session/Reopening.h"
#include "app/statusitem/StatusItem.h"
#include "app/statusitem/StatusMenus.h"
#include "app/uploads/UploadPipeline.h"
#include "app/uploads/journal/UploadJournal.h"
#include "app/workspace/WorkspacePages.h"
#include "platform/PlatformServices.h"
#include "workspace/share/ShareWindows.h"
#include "workspace/window/UploadRows.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class DriveConnection;

class AppDelegate : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        PlatformServices& platform;
        DriveConnection& drive;
        std::shared_ptr<HostReachability> reachability;
        // The local Drive may have died; does nothing for the provider's.
        std::function<void()> reviveDrive;
        bool startsHidden = false;  // the window stays closed as long as nothing has to be asked
        QString placeDecidedBy{};   // see Preferences
        QByteArray uploadJournal{}; // its file; empty: uploads are not kept
    };

    explicit AppDelegate(const Surroundings& surroundings);
    ~AppDelegate() override;

    // --- The program's life -----------------------------------------------------------------------------------------

    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    // Closing the workspace window never ends the program.
    bool applicationShouldTerminateAfterLastWindowClosed() const { return false; }
    bool applicationShouldHandleReopen();
    // Files that were handed to the program; they wait for a sign-in when there is none.
    void application_openFiles(const QList<QByteArray>& paths);
    // The command. Not underneath the sign-in dialog, which is shown instead; and it asks first when a capture would be
    // lost. Reasons from outside do not ask.
    void QuitClick();
    void applicationWillTerminate();

    // --- The account ------------------------------------------------------------------------------------------------

    bool isSignedIn() const { return session_.isSignedIn(); }
    void loginAccess();
    void Drive_Open();
    // Asks first when uploads would be lost.
    void logoutUser();

    void showAlert(const QString& text);
    // Something about the settings that people should read.
    void settingsTroubled(const QString& sentence);

Q_SIGNALS:
    // Start the program on the Drive of this computer instead.
    void localDriveRequested();
    void quitRequested();

private:
    void connectStatusItem();
    void connectAccount();
    void connectUploads();
    void connectChanges();
    void connectWindow();
    void connectToolBar();
    void connectPages();
    void connectCaptures();
    void connectPreferences();
    void connectSignInChoices();
    void countTransfers();

    void becameSingleInstance(const Handover& handover);
    Handover handOver();

    void loginChecked(const MaybeError& keyringTrouble);
    void becameSignedIn();
    void signInEnded(const MaybeError& error);
    void beginSignInAnew();
    void signInRefused();
    void accountFailed(const Error& error);
    void logOut();
    void leaveAccount();
    void setDisplayDataIfAvail();

    void uploadPendingFiles();
    void askAboutOtherAccounts();
    void otherAccountAnswered(const QString& askedFor, int button);

    void carryOut(MenuCommand command);
    void bringWorkspaceToFront();
    bool minimizeAllWindows();
    QWidget* windowForAlerts();
    void openPages();
    void openPage(const PageOpenRecord& page);
    void openOutside(const QUrl& url);
    void shareThisFile(const QString& identifier, const QString& name);
    void tell(const QString& message, const QString& information);
    void refreshStatusItem();

    const Surroundings surroundings_;
    PlatformServices& platform_;

    WorkspaceWindow window_; // its sheets are gone before it is: they belong to those below
    AccountSession session_;
    AccountDetails details_;
    Reopening reopening_;
    std::unique_ptr<UploadJournal> uploadJournal_;
    UploadPipeline uploads_;
    UploadRest uploadRest_;
    QueueWindow queueWindow_;
    UploadRows uploadRows_;
    UploadListing uploadListing_;
    ShareWindows shareWindows_;
    WorkspacePages pages_;
    Captures captures_;
    ChangeFeed changeFeed_;
    ChangeNotices changeNotices_;
    FetchedPictures pictures_;
    AccountInputs inputs_; // what the status item and the menus show
    StatusMenus menus_;
    ChangesPopover popover_;
    StatusItem statusItem_;
    Preferences preferences_;

    QList<QByteArray> openFromDocList_; // wait for a sign-in
    QString account_;                   // whose the uploads are: who is signed in, or was last
    QString othersKeptBeside_;          // the account beside which those of others were said to wait
    QString accountTrouble_;            // why there is nothing to tell of the account
    bool isLaunched_ = false;
    bool isLoginChecked_ = false;
    bool isSucceeded_ = false;     // by a newer program
    QStringList earlyTroubles_;    // of the settings, before that
    bool isSignInRefused_ = false; // the one in the keyring, or a new one
    std::unique_ptr<Timer> keyringPatience_;
    bool isGaugeAwaited_ = true; // before the first page
    std::unique_ptr<Timer> gaugePatience_;
    CompletionTicket launchAlert_; // these four while they wait for an answer
    CompletionTicket signOutQuestion_;
    CompletionTicket quitQuestion_;
    CompletionTicket otherAccountQuestion_;
    bool isQuitAskedInWindow_ = false;
};

} // namespace quenby
