// Every service of the platform that the program uses, as one value that the composition hands on.
#pragma once

#include "platform/Alerts.h"
#include "platform/CacheFolders.h"
#include "platform/CaptureSession.h"
#include "platform/Defaults.h"
#include "platform/Displays.h"
#include "platform/FileBrowser.h"
#include "platform/FilePanels.h"
#include "platform/GlobalShortcuts.h"
#include "platform/Keyring.h"
#include "platform/LoginItem.h"
#include "platform/MoviePlayer.h"
#include "platform/NetworkCost.h"
#include "platform/Notifications.h"
#include "platform/Opener.h"
#include "platform/Pasteboard.h"
#include "platform/ScreenCaptureTool.h"
#include "platform/ScreenshotQuery.h"
#include "platform/SessionEnd.h"
#include "platform/SingleInstance.h"
#include "platform/SleepInhibitor.h"
#include "platform/StatusItemHost.h"
#include "platform/WebView.h"

#include <functional>
#include <memory>

namespace quenby {

// The part of them that keeps an account's sign-in.
struct AccountStorage {
    std::unique_ptr<Defaults> defaults;
    std::unique_ptr<Keyring> keyring;
};

struct PlatformServices {
    std::unique_ptr<Defaults> defaults;
    std::unique_ptr<CacheFolders> cacheFolders;
    std::unique_ptr<Keyring> keyring;
    std::unique_ptr<Notifications> notifications;
    std::unique_ptr<StatusItemHosts> statusItemHosts;
    // A place for a second item, beside that of the first.
    std::function<std::unique_ptr<StatusItemHosts>()> makeStopItemHosts;
    std::unique_ptr<Alerts> alerts;
    std::unique_ptr<FilePanels> filePanels;
    std::unique_ptr<FileBrowser> fileBrowser;
    std::unique_ptr<Pasteboard> pasteboard;
    std::unique_ptr<Opener> opener;
    std::unique_ptr<WebViews> webViews;
    std::unique_ptr<Displays> displays;
    std::unique_ptr<CaptureSessions> captureSessions;
    std::unique_ptr<MoviePlayers> moviePlayers;
    std::unique_ptr<ScreenCaptureTool> screenCaptureTool;
    std::unique_ptr<ScreenshotQuery> screenshotQuery;
    std::unique_ptr<GlobalShortcuts> globalShortcuts;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<NetworkCost> networkCost;
    std::unique_ptr<SleepInhibitor> sleepInhibitor;
    std::unique_ptr<SingleInstance> singleInstance;
    std::unique_ptr<SessionEnd> sessionEnd;
    std::unique_ptr<QObject> appearance; // keeps the program's palette like the desktop's
};

} // namespace quenby
