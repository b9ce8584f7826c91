// The desktop program put together, with every service of the platform played by the test and a real local Drive: what
// the tests of the composition stand on.
#pragma once

#include "app/agent/AppDelegate.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/window/GTMOAuth2WindowUi.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeCacheFolders.h"
#include "tests/platform/fakes/FakeCaptureSession.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeDisplays.h"
#include "tests/platform/fakes/FakeFileBrowser.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeGlobalShortcuts.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeLoginItem.h"
#include "tests/platform/fakes/FakeMoviePlayer.h"
#include "tests/platform/fakes/FakeNetworkCost.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/platform/fakes/FakeScreenCaptureTool.h"
#include "tests/platform/fakes/FakeScreenshotQuery.h"
#include "tests/platform/fakes/FakeSessionEnd.h"
#include "tests/platform/fakes/FakeSingleInstance.h"
#include "tests/platform/fakes/FakeSleepInhibitor.h"
#include "tests/platform/fakes/FakeStatusItemHost.h"
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/uploads/UploadQueueWindow.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>

namespace quenby::testing {

using namespace Qt::StringLiterals;

inline constexpr int patiently = 60000;                   // ms; only a hang takes so long
inline const QString owner = u"robin.hale@example.com"_s; // of the local Drive
inline const QString guest = u"guest@example.com"_s;      // may sign in, but not upload

class AppDelegateStage : public QObject {
    Q_OBJECT

protected Q_SLOTS:
    void init() {
        local_ = std::make_unique<LocalDriveProcess>();
        QVERIFY2(local_->start(), local_->log().constData());
        time_ = std::make_shared<ManualTimeSource>();
        network_ = std::make_shared<FakeReachability>();
        Endpoints endpoints = Endpoints::localDrive(local_->url());
        endpoints.clientConsoleURL = console_;
        drive_ = std::make_unique<DriveConnection>(endpoints, grantedClient(), time_, nullptr);
        drive_->driveService()->ticketSettings().maxRetryInterval = 4;
        platform_ = std::make_unique<PlatformServices>();
        defaults_ = place(platform_->defaults, std::make_unique<FakeDefaults>());
        caches_ = place(platform_->cacheFolders, std::make_unique<FakeCacheFolders>());
        keyring_ = place(platform_->keyring, std::make_unique<FakeKeyring>());
        notifications_ = place(platform_->notifications, std::make_unique<FakeNotifications>());
        hosts_ = place(platform_->statusItemHosts, std::make_unique<FakeStatusItemHosts>());
        alerts_ = place(platform_->alerts, std::make_unique<FakeAlerts>());
        place(platform_->filePanels, std::make_unique<FakeFilePanels>());
        place(platform_->fileBrowser, std::make_unique<FakeFileBrowser>());
        place(platform_->pasteboard, std::make_unique<FakePasteboard>());
        place(platform_->opener, std::make_unique<FakeOpener>());
        place(platform_->displays, std::make_unique<FakeDisplays>());
        place(platform_->captureSessions, std::make_unique<FakeCaptureSessions>());
        place(platform_->moviePlayers, std::make_unique<FakeMoviePlayers>());
        captureTool_ = place(platform_->screenCaptureTool, std::make_unique<FakeScreenCaptureTool>());
        place(platform_->screenshotQuery, std::make_unique<FakeScreenshotQuery>());
        shortcuts_ = place(platform_->globalShortcuts, std::make_unique<FakeGlobalShortcuts>());
        loginItem_ = place(platform_->loginItem, std::make_unique<FakeLoginItem>());
        networkCost_ = place(platform_->networkCost, std::make_unique<FakeNetworkCost>());
        sleepInhibitor_ = place(platform_->sleepInhibitor, std::make_unique<FakeSleepInhibitor>());
        platform_->makeStopItemHosts = [] { return std::make_unique<FakeStatusItemHosts>(); };
        webViews_ = place(platform_->webViews, std::make_unique<FakeWebViews>());
        instance_ = place(platform_->singleInstance, std::make_unique<FakeSingleInstance>());
        sessionEnd_ = place(platform_->sessionEnd, std::make_unique<FakeSessionEnd>());
        journals_ = std::make_unique<QTemporaryDir>();
        makeDelegate();
        revivals_ = 0;
    }
    void cleanup() {
        delegate_.reset();
        platform_.reset();
    }

protected:
    template <typename Service, typename Fake>
    static Fake* place(std::unique_ptr<Service>& service, std::unique_ptr<Fake> fake) {
        Fake* const placed = fake.get();
        service = std::move(fake);
        return placed;
    }
    // The former one goes first, as if its program had ended.
    void makeDelegate() {
        delegate_.reset();
        if (!platform_->statusItemHosts) // it went with the former one
            hosts_ = place(platform_->statusItemHosts, std::make_unique<FakeStatusItemHosts>());
        delegate_ = std::make_unique<AppDelegate>(
            AppDelegate::Surroundings{.platform = *platform_,
                                      .drive = *drive_,
                                      .reachability = network_,
                                      .reviveDrive = [this] { ++revivals_; },
                                      .uploadJournal = QFile::encodeName(journals_->filePath(u"uploads.sqlite"_s))});
    }
    void launch() {
        delegate_->applicationWillFinishLaunching();
        delegate_->applicationDidFinishLaunching();
    }
    void keep(const QByteArray& grant) {
        const KeyringItem item = itemOf(drive_->endpoints());
        keyring_->setItem(item, grant);
        defaults_->setValueForKey(KeychainPersistence::prefsKeyForName(item.serviceName), true);
    }
    // Begins again, on a Drive that gives access to clients as people have registered them.
    void playProvider() {
        cleanup();
        console_ = Endpoints::provider().clientConsoleURL;
        init();
        console_.clear();
        defaults_->setValueForKey(defaultsKey::clientID, grantedClient().clientID);
        defaults_->setValueForKey(defaultsKey::clientSecret, grantedClient().clientSecret);
    }
    QByteArray makeFile(const char* name) {
        QFile file(files_.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write("content") < 0)
            qFatal("A file for the test can't be written.");
        return QFile::encodeName(file.fileName());
    }
    // That have reached the Drive.
    int uploads() {
        int complete = 0;
        for (const QJsonValue& upload : local_->state()["uploads"_L1].toArray())
            complete += upload["complete"_L1].toBool();
        return complete;
    }
    // As the queue's window lists them.
    int queuedUploads() {
        choose(u"Uploads…"_s);
        const auto* list = topLevel<UploadQueueWindow>()->findChild<QAbstractItemView*>();
        return list->model()->rowCount();
    }
    template <typename Window>
    static Window* topLevel() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<Window*>(widget))
                return found;
        }
        return nullptr;
    }
    static WorkspaceWindow* window() { return topLevel<WorkspaceWindow>(); }
    static PopoverWindow* popover() { return topLevel<PopoverWindow>(); } // null before it was first opened
    static bool shows(const QString& text) {
        for (const QLabel* label : window()->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text().contains(text))
                return true;
        }
        return false;
    }
    static GTMOAuth2Window* visibleSheet() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<GTMOAuth2Window*>(widget); found && found->isVisible())
                return found;
        }
        return nullptr;
    }
    // Without its mnemonic; an ampersand that is meant stands there twice.
    static QString plainText(const QAction& action) {
        QStringList parts = action.text().split(u"&&"_s);
        for (QString& part : parts)
            part.remove(u'&');
        return parts.join(u'&');
    }
    QAction* visibleInMenu(const QString& text) const {
        for (QAction* action : hosts_->fake()->menu()->actions()) {
            if (action->isVisible() && plainText(*action) == text)
                return action;
        }
        return nullptr;
    }
    void choose(const QString& text) const {
        QAction* const action = visibleInMenu(text);
        QVERIFY2(action && action->isEnabled(), qPrintable(text));
        action->trigger();
    }

    QUrl console_; // where clients are registered
    std::unique_ptr<LocalDriveProcess> local_;
    std::shared_ptr<ManualTimeSource> time_;
    std::shared_ptr<FakeReachability> network_;
    QTemporaryDir files_;
    std::unique_ptr<DriveConnection> drive_;
    std::unique_ptr<PlatformServices> platform_;
    FakeDefaults* defaults_ = nullptr; // these belong to the platform
    FakeCacheFolders* caches_ = nullptr;
    FakeKeyring* keyring_ = nullptr;
    FakeStatusItemHosts* hosts_ = nullptr;
    FakeAlerts* alerts_ = nullptr;
    FakeNotifications* notifications_ = nullptr;
    FakeWebViews* webViews_ = nullptr;
    FakeSingleInstance* instance_ = nullptr;
    FakeSessionEnd* sessionEnd_ = nullptr;
    FakeScreenCaptureTool* captureTool_ = nullptr;
    FakeGlobalShortcuts* shortcuts_ = nullptr;
    FakeLoginItem* loginItem_ = nullptr;
    FakeNetworkCost* networkCost_ = nullptr;
    FakeSleepInhibitor* sleepInhibitor_ = nullptr;
    std::unique_ptr<QTemporaryDir> journals_;
    std::unique_ptr<AppDelegate> delegate_;
    int revivals_ = 0;
};

} // namespace quenby::testing
