// quenby-localdrive: a Drive on this computer.
#include "localdrive/server/EndpointNote.h"
#include "localdrive/server/LocalServer.h"
#include "localdrive/server/ServerOptions.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

using namespace quenby;
using namespace quenby::localdrive;
using namespace std::chrono_literals;

namespace {

enum ExitCode { ended = 0, failed = 1, wrongUsage = 2, alreadyRunning = 3 };

// SIGTERM and SIGINT as a readable descriptor. Blocked before any thread is started, so that none is interrupted.
int endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

void say(std::FILE* stream, const QString& text) {
    std::fputs((text + QLatin1Char('\n')).toUtf8().constData(), stream);
    std::fflush(stream);
}

int explain(const Error& error, ExitCode code) {
    say(stderr, QStringLiteral("quenby-localdrive: ") + error.detail(errorKey::reason).toString());
    return code;
}

int showUsage(const Error& error) {
    if (error.code() != 0)
        return explain(error, wrongUsage);
    say(stdout, error.detail(errorKey::reason).toString());
    return ended;
}

int refuseToStart(const Error& error, const QString& folder) {
    if (!error.is(errorDomain::posix, EWOULDBLOCK))
        return explain(error, failed);
    const auto note = EndpointNote::read(folder);
    say(stderr, note ? QStringLiteral("quenby-localdrive: already listening on %1").arg(note->url.toString())
                     : QStringLiteral("quenby-localdrive: already starting on this folder"));
    return alreadyRunning;
}

// Fonts, for exports, come with an application that could show windows. This one never does, and must not look for a
// screen, a theme or an input method.
void needNoDesktop() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_IM_MODULE", "none");
    qunsetenv("QT_QPA_PLATFORMTHEME");
}

int serve(LocalServer& server, const ServerOptions& options, int signalDescriptor) {
    QSocketNotifier ending(signalDescriptor, QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    QTimer idle;
    QObject::connect(&idle, &QTimer::timeout, [&] {
        if (server.idleTime() >= *options.idleExit)
            QCoreApplication::quit();
    });
    if (options.idleExit)
        idle.start(std::min<std::chrono::milliseconds>(*options.idleExit / 2, 5s));

    std::thread serving([&server] { server.serve(); });
    say(stdout, QStringLiteral("quenby-localdrive listening on ") + server.url().toString());
    const int code = QCoreApplication::exec();
    server.stop();
    serving.join();
    return code;
}

} // namespace

int main(int argc, char** argv) {
    const int signalDescriptor = endingSignals();
    needNoDesktop();
    // Outside of sessions the toolkit would complain that there is no folder for running programs.
    QLoggingCategory* const log = QLoggingCategory::defaultCategory();
    log->setEnabled(QtWarningMsg, false);
    const QGuiApplication application(argc, argv);
    log->setEnabled(QtWarningMsg, true);
    const auto options = ServerOptions::parse(QCoreApplication::arguments());
    if (!options)
        return showUsage(options.error());
    const auto server = LocalServer::open(*options, [] {
        QMetaObject::invokeMethod(
            qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    });
    if (!server)
        return refuseToStart(server.error(), options->dataFolder);
    return serve(**server, *options, signalDescriptor);
}
