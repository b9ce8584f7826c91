#include "app/agent/DesktopProgram.h"

#include "app/account/ClientIdentity.h"
#include "app/account/DriveConnection.h"
#include "app/account/DriveSettings.h"
#include "app/account/ProxySetting.h"
#include "app/agent/AppDelegate.h"
#include "app/agent/LaunchTrace.h"
#include "app/cli/Console.h"
#include "app/cli/Folders.h"
#include "app/cli/LocalDriveLauncher.h"
#include "app/cli/Options.h"
#include "app/statusitem/ApplicationIcon.h"
#include "core/Endpoints.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/FetchLog.h"
#include "oauth2/NetworkInformationReachability.h"
#include "platform/linux/LinuxPlatform.h"

#include <QApplication>
#include <QFile>
#include <QProcess>

#include <csignal>
#include <optional>
#include <utility>

namespace quenby {
namespace {

bool hasDisplay() {
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

std::optional<StatusItemPlace> placeNamed(const QByteArray& name) {
    if (name == "tray")
        return StatusItemPlace::tray;
    if (name == "strip")
        return StatusItemPlace::strip;
    return std::nullopt;
}

// How the desktop starts this program at the next login: on the same Drive.
QStringList loginArguments(const Options& options) {
    QStringList arguments{QStringLiteral("--hidden")};
    if (options.local)
        arguments.prepend(QStringLiteral("--local"));
    if (!options.localData.isEmpty())
        arguments += {QStringLiteral("--local-data"), QFile::decodeName(absolutePath(options.localData))};
    return arguments;
}

// Puts the program together once it is known which Drive to talk to.
class DesktopProgram {
public:
    explicit DesktopProgram(const Options& options)
        : options_(options)
        , platform_(makeLinuxPlatform({options.local ? QStringLiteral("quenby-local") : QStringLiteral("quenby"),
                                       placeNamed(options.statusItemPlace), loginArguments(options), options.hidden},
                                      timeSource_))
        , proxies_(*platform_.defaults, timeSource_) {
        // Until there is somebody else to hear it: the local Drive may take its time.
        QObject::connect(platform_.defaults.get(), &Defaults::troubled, &context_, [this](const QString& sentence) {
            if (!delegate_)
                settingsTrouble_.append(sentence);
        });
        QObject::connect(platform_.sessionEnd.get(), &SessionEnd::endRequested, &context_, [this] {
            if (!delegate_)
                QCoreApplication::quit();
        });
    }

    void start() {
        if (!options_.local)
            return open(Endpoints::provider(), ClientIdentity::chosen(*platform_.defaults));
        launcher_ = std::make_unique<LocalDriveLauncher>(
            options_.localData.isEmpty() ? defaultLocalDriveFolder() : absolutePath(options_.localData),
            QCoreApplication::applicationDirPath() + QStringLiteral("/quenby-localdrive"), timeSource_);
        launcher_->ensureRunning(&context_, [this](const Result<QUrl>& base) {
            if (base)
                return open(Endpoints::localDrive(*base), ClientIdentity::ofTheProgram());
            platform_.alerts->show(
                nullptr, {QObject::tr("The local Drive could not be started"), base.error().description(), {}, {}},
                &context_, [](int) { QCoreApplication::exit(exitCode::failed); });
        });
    }

private:
    void open(Endpoints endpoints, ClientIdentity identity) {
        std::shared_ptr<FetchLogger> log;
        if (!options_.httpLog.isEmpty())
            log = std::make_shared<FetchLog>(QFile::decodeName(options_.httpLog), QStringLiteral("quenby"),
                                             FetchLog::loggingDateStamp(timeSource_->now().toLocalTime()));
        endpoints.road = roadToBeginWith(*platform_.defaults, endpoints);
        drive_ = std::make_unique<DriveConnection>(std::move(endpoints), std::move(identity), timeSource_,
                                                   std::move(log), proxies_.source());
        QObject::connect(drive_->driveService().get(), &GTLService::roadChanged, &context_,
                         [this] { noteLostRoad(*platform_.defaults); });
        // Whoever has the patience for an upload takes it up again; waiting inside of a request would only hide it.
        drive_->driveService()->ticketSettings().maxRetryInterval = 4;
        delegate_ = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            platform_, *drive_, std::make_shared<NetworkInformationReachability>(),
            [this] {
                if (launcher_)
                    launcher_->revive();
            },
            options_.hidden,
            placeNamed(options_.statusItemPlace) ? QObject::tr("It was chosen on the command line, with --status-item.")
                                                 : QString(),
            stateFolder() + (options_.local ? "/uploads-local.sqlite" : "/uploads.sqlite")});
        AppDelegate& delegate = *delegate_;
        if (launcher_)
            QObject::connect(launcher_.get(), &LocalDriveLauncher::revived, &delegate, [&delegate] {
                if (delegate.isSignedIn())
                    delegate.Drive_Open();
            });
        QObject::connect(&delegate, &AppDelegate::quitRequested, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        QObject::connect(&delegate, &AppDelegate::localDriveRequested, &delegate, [this] { startOnLocalDrive(); });
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
        for (const QString& sentence : std::exchange(settingsTrouble_, {}))
            delegate.settingsTroubled(sentence);
        delegate.applicationWillFinishLaunching();
        if (!options_.files.isEmpty())
            delegate.application_openFiles(options_.files);
        delegate.applicationDidFinishLaunching();
    }

    // It asks this program to end, as every newcomer does.
    void startOnLocalDrive() {
        QStringList arguments{QStringLiteral("--local")};
        const auto pass = [&arguments](const QString& option, const QByteArray& value) {
            if (!value.isEmpty())
                arguments += {option, QFile::decodeName(value)};
        };
        pass(QStringLiteral("--local-data"), options_.localData);
        pass(QStringLiteral("--http-log"), options_.httpLog);
        pass(QStringLiteral("--status-item"), options_.statusItemPlace);
        if (!QProcess::startDetached(QCoreApplication::applicationFilePath(), arguments))
            delegate_->showAlert(QObject::tr("The local Drive could not be started"));
    }

    const Options& options_;
    const std::shared_ptr<TimeSource> timeSource_ = makeSystemTimeSource();
    PlatformServices platform_;
    const ProxySetting proxies_;
    std::unique_ptr<LocalDriveLauncher> launcher_;
    std::unique_ptr<DriveConnection> drive_;
    std::unique_ptr<AppDelegate> delegate_;
    QStringList settingsTrouble_;
    QObject context_;
};

} // namespace

int runDesktopProgram(int argc, char** argv, const Options& options, Console& console) {
    // Whoever started it may be gone, and with him the other end of its output.
    std::signal(SIGPIPE, SIG_IGN);
    if (!hasDisplay()) {
        console.page(QStringLiteral("quenby: the desktop program needs a display, and there is none; "
                                    "these commands work without\n\n") +
                         usageText(Verb::desktop),
                     true);
        return exitCode::wrongUse;
    }
    QCoreApplication::setApplicationName(QStringLiteral("quenby"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUENBY_VERSION));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quenby"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quenby.Quenby"));
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(applicationIcon());
    traceLaunch("started");
    DesktopProgram program(options);
    program.start();
    return QCoreApplication::exec();
}

} // namespace quenby
