// The composition's objects, and which of them hears of what. What is then done stands in
// AppDelegate.cpp and AppDelegateCommands.cpp.
#include "app/account/DriveConnection.h"
#include "app/agent/AppDelegate.h"
#include "app/agent/LaunchTrace.h"
#include "app/dropview/dragFileImageView.h"
#include "app/statusitem/ApplicationIcon.h"
#include "core/DefaultsKeys.h"
#include "popover/changes/RowTexts.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/WelcomeView.h"
#include "workspace/window/WorkspaceToolBar.h"

#include <QAction>

namespace quenby {
namespace {

// Somebody who works offline for a while does not want to hear that an upload has failed.
constexpr UploadLimits uploadLimits{.patience = std::chrono::hours(1), .comesBack = true};

} // namespace

AppDelegate::AppDelegate(const Surroundings& surroundings)
    : surroundings_(surroundings)
    , platform_(surroundings.platform)
    , window_(*platform_.defaults)
    , session_({surroundings.drive, *platform_.keyring, *platform_.defaults, *platform_.webViews, *platform_.opener,
                surroundings.reachability})
    , details_(surroundings.drive.driveService(), surroundings.drive.timeSource())
    , reopening_(surroundings.drive.endpoints().rpcURL.host(), surroundings.reachability,
                 surroundings.drive.timeSource())
    , uploadJournal_(surroundings.uploadJournal.isEmpty() ? nullptr
                                                          : std::make_unique<UploadJournal>(surroundings.uploadJournal))
    , uploads_(
          {[this] { return session_.UserLogin() ? surroundings_.drive.driveService() : nullptr; },
           surroundings.drive.timeSource(), *platform_.defaults, *platform_.notifications, *platform_.alerts,
           *platform_.filePanels, *platform_.pasteboard, *platform_.opener},
          [this] { return &window_; }, uploadLimits)
    , uploadRest_(uploads_.queue(), *platform_.defaults, *platform_.networkCost, *platform_.sleepInhibitor,
                  surroundings.drive.timeSource())
    , queueWindow_(
          {uploads_.queue(), uploadRest_, *platform_.defaults, *platform_.fileBrowser, surroundings.drive.timeSource()})
    , uploadListing_(uploads_.queue(), uploadRows_)
    , shareWindows_(*platform_.webViews, surroundings.drive.timeSource())
    , pages_(window_, platform_, surroundings.drive.endpoints(), surroundings.drive.timeSource())
    , captures_(
          platform_, uploads_, surroundings.drive.timeSource(), [this] { return minimizeAllWindows(); },
          [this] { return windowForAlerts(); })
    , changeFeed_(
          surroundings.drive.driveService(), *platform_.defaults, [this] { return session_.strSHARE(); },
          surroundings.drive.timeSource())
    , changeNotices_(*platform_.notifications, surroundings.drive.timeSource())
    , pictures_(surroundings.drive.pictureFetcherService(), surroundings.drive.endpoints(), *platform_.cacheFolders)
    , inputs_(session_, details_, uploads_, [this] { return popover_.isVisible(); })
    , menus_(inputs_, *platform_.defaults)
    , popover_({changeFeed_, pictures_, inputs_, menus_, *platform_.defaults, surroundings.drive.endpoints(),
                surroundings.drive.timeSource()})
    , statusItem_(*platform_.statusItemHosts, *platform_.defaults, inputs_, surroundings.drive.timeSource(),
                  menus_.statusMenu(), applicationIcon())
    , preferences_({surroundings.platform, surroundings.drive, session_, details_, applicationIcon(),
                    surroundings.placeDecidedBy}) {
    connectAccount();
    connectUploads();
    connectChanges();
    connectStatusItem();
    connectWindow();
    connectPages();
    connectCaptures();
    connectPreferences();
    connectSignInChoices();
}

// The place where the status item stands still looks at it.
AppDelegate::~AppDelegate() {
    platform_.statusItemHosts.reset();
    window_.accountView().setUploads(nullptr);
}

void AppDelegate::connectAccount() {
    connect(&session_, &AccountSession::signedIn, this, [this] {
        Drive_Open();
        becameSignedIn();
    });
    connect(&session_, &AccountSession::signInEnded, this, &AppDelegate::signInEnded);
    connect(&session_, &AccountSession::signInRefused, this, &AppDelegate::signInRefused);
    connect(&session_, &AccountSession::keepingFailed, this, [this](const Error& error) {
        tell(tr("The sign-in could not be kept"),
             tr("You are signed in until Quenby ends, and will be asked again at the next start. ") +
                 error.detail(errorKey::reason).toString());
    });
    connect(&session_, &AccountSession::signOutTroubled, this, [this](const Error& error) {
        tell(tr("The sign-in could not be removed from the keyring"),
             tr("You are signed out, and it is not used any more. To remove it, unlock the keyring, sign in and sign "
                "out again. ") +
                 error.detail(errorKey::reason).toString());
    });
    connect(&details_, &AccountDetails::arrived, this, [this] {
        traceLaunch("account");
        changeFeed_.GetChangeListGoogleDrive();
    });
    connect(&details_, &AccountDetails::changed, this, [this] {
        reopening_.succeeded();
        accountTrouble_.clear();
        setDisplayDataIfAvail();
        refreshStatusItem();
        uploads_.tryNow();
    });
    connect(&details_, &AccountDetails::failed, this, &AppDelegate::accountFailed);
    connect(&reopening_, &Reopening::due, this, &AppDelegate::Drive_Open);
}

void AppDelegate::connectUploads() {
    connect(&uploads_, &UploadPipeline::statusItemRefreshWanted, this, &AppDelegate::refreshStatusItem);
    connect(&uploads_, &UploadPipeline::shareRequested, this, &AppDelegate::shareThisFile);
    connect(&uploads_, &UploadPipeline::RootFolderIdChanged, &details_, &AccountDetails::setRootFolderId);
    connect(&queueWindow_, &QueueWindow::filesDropped, &uploads_, &UploadPipeline::UploadFilesToServer);
    connect(&uploads_.queue(), &UploadQueue::wasRead, this, &AppDelegate::askAboutOtherAccounts);
    if (uploadJournal_) {
        connect(uploadJournal_.get(), &UploadJournal::troubled, this, [this](const Error& error) {
            tell(tr("Trouble with the list of uploads"), error.detail(errorKey::reason).toString());
        });
    }
    menus_.enable(MenuCommand::showUploads, true);
}

void AppDelegate::connectChanges() {
    connect(&uploads_, &UploadPipeline::uploaded, &changeFeed_, &ChangeFeed::addUploaded);
    connect(&changeFeed_, &ChangeFeed::noticed, &changeNotices_, &ChangeNotices::tell);
    connect(&changeNotices_, &ChangeNotices::openRequested, this, [this](const ChangeRecord& record) {
        const RowTexts texts = rowTexts(record);
        if (texts.isOpenable())
            openPage(rowPage(texts, surroundings_.drive.endpoints().webURL));
    });
    connect(&changeNotices_, &ChangeNotices::shareRequested, this, &AppDelegate::shareThisFile);

    connect(&popover_, &ChangesPopover::openRequested, this, &AppDelegate::openPage);
    connect(&popover_, &ChangesPopover::shareRequested, this, &AppDelegate::shareThisFile);
    connect(&popover_, &ChangesPopover::filesDropped, &uploads_, &UploadPipeline::UploadFilesToServer);
    connect(&popover_, &ChangesPopover::visibleChanged, &statusItem_, &StatusItem::redisplay);
    // Its place moves with the item's size.
    connect(platform_.defaults.get(), &Defaults::changed, this, [this](const QString& key) {
        if (key == defaultsKey::showMenubarIcon || key == defaultsKey::showUsegeText)
            popover_.close();
    });
    menus_.enable(MenuCommand::showChanges, true);
}

void AppDelegate::connectStatusItem() {
    connect(&statusItem_, &StatusItem::displayed, this,
            [](bool isFirst) { traceLaunch(isFirst ? "gauge" : "repaint"); });
    const auto gaugeIsShown = [this] {
        if (std::exchange(isGaugeAwaited_, false) && gaugePatience_)
            openPages();
    };
    connect(&statusItem_, &StatusItem::displayed, this, gaugeIsShown, Qt::QueuedConnection);
    connect(&statusItem_, &StatusItem::statusItemClicked, this, &AppDelegate::bringWorkspaceToFront);
    connect(&statusItem_, &StatusItem::statusItemMiddleClicked, this,
            [this] { popover_.toggle(statusItem_.geometry()); });
    connect(&statusItem_, &StatusItem::dragEntered, this, &AppDelegate::bringWorkspaceToFront);
    connect(&statusItem_, &StatusItem::filesDropped, &uploads_, &UploadPipeline::UploadFilesToServer);
    connect(&menus_, &StatusMenus::triggered, this, &AppDelegate::carryOut);
}

void AppDelegate::connectWindow() {
    const auto dropView = new dragFileImageView;
    connect(dropView, &dragFileImageView::raiseRequested, this, &AppDelegate::bringWorkspaceToFront);
    connect(dropView, &dragFileImageView::filesDropped, &uploads_, &UploadPipeline::UploadFilesToServer);
    window_.accountView().setDropView(dropView);
    window_.accountView().setUploads(&uploadRows_);
    window_.welcomeView().setOffersLocalDrive(!surroundings_.drive.endpoints().isLocal);
    window_.setCommandsMenu(&menus_.statusMenu());

    connect(&window_, &WorkspaceWindow::becameKey, this, [this] {
        popover_.close();
        statusItem_.redisplay();
    });
    connect(&window_.accountView(), &AccountView::uploadRequested, this, [this] { carryOut(MenuCommand::uploadFile); });
    connect(&window_.accountView(), &AccountView::allUploadsRequested, this,
            [this] { carryOut(MenuCommand::showUploads); });
    connectToolBar();
    connect(&window_.welcomeView(), &WelcomeView::signInRequested, this,
            [this] { session_.makeLoginInGoogle(&window_); });
    connect(&window_.welcomeView(), &WelcomeView::tryAgainRequested, this, [this] {
        if (isSignInRefused_) // the keyring has nothing better
            session_.makeLoginInGoogle(&window_);
        else
            loginAccess();
    });
    connect(&window_.welcomeView(), &WelcomeView::localDriveRequested, this, &AppDelegate::localDriveRequested);
    connect(platform_.keyring.get(), &Keyring::becameAvailable, this, [this] {
        if (isLaunched_ && !session_.UserLogin() && window_.isShowingWelcome())
            loginAccess();
    });
    connect(platform_.defaults.get(), &Defaults::troubled, this, &AppDelegate::settingsTroubled);
}

// Commands that nobody carries out yet are disabled in the menus, and here as well.
void AppDelegate::connectToolBar() {
    static constexpr std::pair<ToolBarCommand, MenuCommand> commands[] = {
        {ToolBarCommand::upload, MenuCommand::uploadFile},
        {ToolBarCommand::record, MenuCommand::recordScreen},
        {ToolBarCommand::changes, MenuCommand::showChanges},
        {ToolBarCommand::preferences, MenuCommand::preferences},
    };
    for (const auto& [button, command] : commands) {
        QAction* action = window_.toolBar().action(button);
        const QAction* entry = menus_.action(command);
        action->setEnabled(entry->isEnabled());
        connect(entry, &QAction::changed, action, [action, entry] { action->setEnabled(entry->isEnabled()); });
        connect(action, &QAction::triggered, this, [this, carried = command] { carryOut(carried); });
    }
}

void AppDelegate::connectPages() {
    connect(&pages_, &WorkspacePages::loginAccess, this, &AppDelegate::loginAccess);
    connect(&pages_, &WorkspacePages::logoutUser, this, &AppDelegate::logoutUser);
    connect(&pages_, &WorkspacePages::bringToFront, this, &AppDelegate::bringWorkspaceToFront);
    connect(&pages_, &WorkspacePages::openOutsideRequested, this, &AppDelegate::openOutside);
    connect(&pages_, &WorkspacePages::filesDropped, &uploads_, &UploadPipeline::UploadFilesToServer);
    connect(&uploads_, &UploadPipeline::RootFolderIdChanged, &pages_, &WorkspacePages::setRootFolderId);
    connect(&details_, &AccountDetails::changed, this, [this] { pages_.setRootFolderId(details_.RootFolderId()); });
    connect(&uploadRows_, &UploadRows::countChanged, this, &AppDelegate::countTransfers);
    connect(&pages_.downloads(), &Downloads::countChanged, this, &AppDelegate::countTransfers);
}

void AppDelegate::connectCaptures() {
    for (const MenuCommand command :
         {MenuCommand::captureAndUploadScreenshot, MenuCommand::uploadClipboard, MenuCommand::recordScreen})
        menus_.enable(command, true);
}

void AppDelegate::connectPreferences() {
    connect(&preferences_, &Preferences::ShowMainWindow, this, &AppDelegate::bringWorkspaceToFront);
    connect(&preferences_, &Preferences::accountDataWanted, this, &AppDelegate::setDisplayDataIfAvail);
    connect(&preferences_, &Preferences::logoutUser, this, &AppDelegate::logoutUser);
    connect(&preferences_, &Preferences::signInRequested, this, [this] { carryOut(MenuCommand::signIn); });
    // A sign-in as the former client would not be renewed any more after the next start.
    connect(&preferences_, &Preferences::clientChanged, this, [this] {
        window_.welcomeView().setOwnClient(preferences_.ownClient());
        if (session_.UserLogin())
            logoutUser();
        else
            beginSignInAnew();
    });
    connect(&preferences_, &Preferences::signInAgainRequested, this, &AppDelegate::logoutUser);
    menus_.enable(MenuCommand::preferences, true);
}

void AppDelegate::connectSignInChoices() {
    WelcomeView& view = window_.welcomeView();
    AccessChoice& access = preferences_.access();
    view.setOffersAccess(access.isOffered());
    view.setAccess(access.access());
    connect(&view, &WelcomeView::accessChosen, &access, &AccessChoice::choose);
    connect(&access, &AccessChoice::accessChanged, &view, &WelcomeView::setAccess);
    connect(&access, &AccessChoice::accessChanged, this, &AppDelegate::beginSignInAnew);
    view.setOffersOwnClient(preferences_.offersOwnClient());
    view.setOwnClient(preferences_.ownClient());
    connect(&view, &WelcomeView::ownClientRequested, this, [this] { preferences_.showOwnClient(&window_); });
}

void AppDelegate::countTransfers() {
    window_.toolBar().setRunningTransfers(uploadRows_.rowCount() + uploadRows_.waiting() +
                                          int(pages_.downloads().DownloadFileList().size()));
}

} // namespace quenby
