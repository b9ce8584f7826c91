#include "app/diagnostics/DesktopFacts.h"

#include "platform/PlatformServices.h"
#include "platform/linux/modules/ModuleFile.h"

#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QScreen>
#include <QSysInfo>

#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <optional>

namespace quenby {
namespace {

QString environmentText(const char* name) {
    const QString value = qEnvironmentVariable(name);
    return value.isEmpty() ? QStringLiteral("not set") : value;
}

// Since this process began: the kernel counts both in time since the computer started.
std::optional<qint64> secondsRunning() {
    constexpr qsizetype startTimeField = 19; // of those after the name, which may hold anything (man 5 proc)
    QFile file(QStringLiteral("/proc/self/stat"));
    timespec now{};
    if (!file.open(QIODevice::ReadOnly) || clock_gettime(CLOCK_BOOTTIME, &now) != 0)
        return std::nullopt;
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    bool isNumber = false;
    const qint64 start = fields.value(startTimeField).toLongLong(&isNumber);
    return isNumber ? std::optional(now.tv_sec - start / sysconf(_SC_CLK_TCK)) : std::nullopt;
}

QString durationText(qint64 seconds) {
    const qint64 minutes = seconds / 60;
    if (minutes < 1)
        return QStringLiteral("%1 s").arg(seconds);
    if (minutes < 60)
        return QStringLiteral("%1 min").arg(minutes);
    return QStringLiteral("%1 h %2 min").arg(minutes / 60).arg(minutes % 60);
}

QString buildTypeText() {
#ifdef NDEBUG
    return QStringLiteral("release");
#else
    return QStringLiteral("with assertions");
#endif
}

QString screenText(const QScreen& screen) {
    const QSize size = screen.size();
    return QStringLiteral("%1 x %2 points, scale %3, %4 Hz")
        .arg(size.width())
        .arg(size.height())
        .arg(screen.devicePixelRatio())
        .arg(qRound(screen.refreshRate()));
}

QString stateText(const PlatformService* service) {
    if (!service)
        return QStringLiteral("there is none in this program");
    const QString trouble = service->unavailableBecause();
    return trouble.isEmpty() ? QStringLiteral("works") : trouble;
}

// A library that this process has loaded already; asking loads nothing.
bool isLoaded(const char* library) {
    void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

QString moduleText(const char* module, const char* library) {
    if (isLoaded(library))
        return QStringLiteral("loaded");
    return isModuleThere(moduleFolders(), QString::fromLatin1(module)) ? QStringLiteral("there, not loaded yet")
                                                                       : QStringLiteral("missing");
}

} // namespace

DiagnosticsSection programSection(const QString& version) {
    const auto seconds = secondsRunning();
    return {QStringLiteral("Program"),
            {{QStringLiteral("Quenby"), version},
             {QStringLiteral("Build"), buildTypeText()},
             {QStringLiteral("Qt"), QString::fromLatin1(qVersion())},
             {QStringLiteral("Running for"), seconds ? durationText(*seconds) : QStringLiteral("not known")},
             {QStringLiteral("System"), QSysInfo::prettyProductName()},
             {QStringLiteral("Kernel"), QSysInfo::kernelType() + QLatin1Char(' ') + QSysInfo::kernelVersion() +
                                            QLatin1Char(' ') + QSysInfo::currentCpuArchitecture()}}};
}

DiagnosticsSection desktopSection() {
    DiagnosticsSection section{QStringLiteral("Desktop"),
                               {{QStringLiteral("Desktop"), environmentText("XDG_CURRENT_DESKTOP")},
                                {QStringLiteral("Session"), environmentText("XDG_SESSION_TYPE")},
                                {QStringLiteral("Windows by"), QGuiApplication::platformName()},
                                {QStringLiteral("Locale"), QLocale::system().name()}}};
    int number = 0;
    for (const QScreen* screen : QGuiApplication::screens())
        section.lines.append({QStringLiteral("Screen %1").arg(++number), screenText(*screen)});
    return section;
}

DiagnosticsSection statusItemSection(const PlatformServices& platform) {
    const StatusItemHost* const host = platform.statusItemHosts ? platform.statusItemHosts->host() : nullptr;
    DiagnosticsSection section{QStringLiteral("Status item"), {}};
    if (!host) {
        section.lines.append({QStringLiteral("Place"), QStringLiteral("none yet")});
        return section;
    }
    const bool isTray = host->place() == StatusItemPlace::tray;
    section.lines.append({QStringLiteral("Place"), isTray ? QStringLiteral("tray") : QStringLiteral("strip")});
    if (!host->protocol().isEmpty())
        section.lines.append({QStringLiteral("Protocol"), host->protocol()});
    section.lines.append({QStringLiteral("State"), stateText(host)});
    return section;
}

DiagnosticsSection servicesSection(const PlatformServices& platform) {
    const std::pair<const char*, const PlatformService*> services[] = {
        {"Settings", platform.defaults.get()},
        {"Cache folders", platform.cacheFolders.get()},
        {"Keyring", platform.keyring.get()},
        {"Notifications", platform.notifications.get()},
        {"Status item", platform.statusItemHosts.get()},
        {"Alerts", platform.alerts.get()},
        {"File panels", platform.filePanels.get()},
        {"File browser", platform.fileBrowser.get()},
        {"Clipboard", platform.pasteboard.get()},
        {"Opening pages and files", platform.opener.get()},
        {"Web pages", platform.webViews.get()},
        {"Displays", platform.displays.get()},
        {"Screen recording", platform.captureSessions.get()},
        {"Movie player", platform.moviePlayers.get()},
        {"Screenshot tool", platform.screenCaptureTool.get()},
        {"Screenshot folders", platform.screenshotQuery.get()},
        {"Global shortcuts", platform.globalShortcuts.get()},
        {"Launch at login", platform.loginItem.get()},
        {"Single instance", platform.singleInstance.get()},
        {"Session end", platform.sessionEnd.get()},
    };
    DiagnosticsSection section{QStringLiteral("Services"), {}};
    for (const auto& [name, service] : services)
        section.lines.append({QString::fromLatin1(name), stateText(service)});
    return section;
}

DiagnosticsSection modulesSection() {
    return {QStringLiteral("Modules"),
            {{QStringLiteral("Web engine"), moduleText("quenby-webengine", "libQt6WebEngineCore.so.6")},
             {QStringLiteral("Media framework"), moduleText("quenby-media", "libgstreamer-1.0.so.0")}}};
}

} // namespace quenby
