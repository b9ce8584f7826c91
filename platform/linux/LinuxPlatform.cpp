#include "platform/linux/LinuxPlatform.h"

#include "platform/linux/desktop/AutomaticStatusItemHosts.h"
#include "platform/linux/desktop/BusFileBrowser.h"
#include "platform/linux/desktop/BusNotifications.h"
#include "platform/linux/desktop/ClipboardPasteboard.h"
#include "platform/linux/desktop/DarkPreference.h"
#include "platform/linux/desktop/DesktopOpener.h"
#include "platform/linux/desktop/DialogFilePanels.h"
#include "platform/linux/desktop/MessageBoxAlerts.h"
#include "platform/linux/desktop/ScreenDisplays.h"
#include "platform/linux/login/AutostartLoginItem.h"
#include "platform/linux/media/PluginMedia.h"
#include "platform/linux/modules/ModuleFile.h"
#include "platform/linux/network/DesktopSleepInhibitor.h"
#include "platform/linux/network/NetworkManagerCost.h"
#include "platform/linux/screencapture/ProcessScreenCaptureTool.h"
#include "platform/linux/screenshots/FolderScreenshotQuery.h"
#include "platform/linux/session/BusSingleInstance.h"
#include "platform/linux/session/IniDefaults.h"
#include "platform/linux/session/PosixSessionEnd.h"
#include "platform/linux/session/SecretServiceKeyring.h"
#include "platform/linux/session/UserFolders.h"
#include "platform/linux/session/XdgCacheFolders.h"
#include "platform/linux/shortcuts/DesktopShortcuts.h"
#include "platform/linux/web/PluginWebViews.h"

#include <QPointer>

namespace quenby {
namespace {

// How long a starting session is given to bring up its tray, before the strip takes its place.
constexpr std::chrono::milliseconds trayPatience(1500);

} // namespace

AccountStorage makeLinuxAccountStorage(const QString& profile) {
    return {std::make_unique<IniDefaults>(settingsFilePath(profile)), std::make_unique<SecretServiceKeyring>()};
}

PlatformServices makeLinuxPlatform(const LinuxPlatformOptions& options, const std::shared_ptr<TimeSource>& timeSource) {
    PlatformServices services;
    AccountStorage storage = makeLinuxAccountStorage(options.profile);
    services.defaults = std::move(storage.defaults);
    services.keyring = std::move(storage.keyring);
    services.cacheFolders = std::make_unique<XdgCacheFolders>(cacheFolderPath(options.profile));
    services.notifications = std::make_unique<BusNotifications>();
    auto items = std::make_unique<AutomaticStatusItemHosts>(
        StatusItemHostsOptions{.place = options.statusItemPlace,
                               .patience = options.startsWithSession ? trayPatience : std::chrono::milliseconds(0)},
        timeSource);
    services.makeStopItemHosts = [place = options.statusItemPlace, timeSource,
                                  items = QPointer<AutomaticStatusItemHosts>(items.get())] {
        const auto itemsPlace = [items] { return items && items->host() ? items->host()->geometry() : QRect(); };
        // Nobody is to look for it while a recording runs.
        const std::chrono::milliseconds none(0);
        auto hosts = std::make_unique<AutomaticStatusItemHosts>(
            StatusItemHostsOptions{
                .place = place, .patience = none, .patienceWithChosenTray = none, .neighbour = itemsPlace},
            timeSource);
        if (items)
            hosts->follow(*items);
        return hosts;
    };
    services.statusItemHosts = std::move(items);
    services.alerts = std::make_unique<MessageBoxAlerts>();
    services.filePanels = std::make_unique<DialogFilePanels>();
    services.fileBrowser = std::make_unique<BusFileBrowser>();
    services.pasteboard = std::make_unique<ClipboardPasteboard>();
    services.opener = std::make_unique<DesktopOpener>();
    services.webViews = std::make_unique<PluginWebViews>(PluginWebViewsPlaces::standard(options.profile));
    services.displays = std::make_unique<ScreenDisplays>();
    const auto media = std::make_shared<LoadedMedia>(moduleFolders());
    services.captureSessions = std::make_unique<PluginCaptureSessions>(media);
    services.moviePlayers = std::make_unique<PluginMoviePlayers>(media);
    services.screenCaptureTool = std::make_unique<ProcessScreenCaptureTool>();
    services.screenshotQuery = std::make_unique<FolderScreenshotQuery>(timeSource, screenshotPlaces());
    services.globalShortcuts = makeDesktopShortcuts();
    services.loginItem =
        std::make_unique<AutostartLoginItem>(autostartOptions(options.profile, options.loginArguments));
    services.networkCost = std::make_unique<NetworkManagerCost>();
    services.sleepInhibitor = std::make_unique<DesktopSleepInhibitor>();
    services.singleInstance = std::make_unique<BusSingleInstance>(QDBusConnection::sessionBus(), timeSource);
    services.sessionEnd = std::make_unique<PosixSessionEnd>();
    services.appearance = std::make_unique<DarkPreference>();
    return services;
}

} // namespace quenby
