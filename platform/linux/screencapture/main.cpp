// quenby-screencapture -i PATH: lets the user choose a part of the screen, and saves its picture.
//
// Exit codes: 0: done, or cancelled, and then there is no picture; 1: trouble, with one sentence on standard error;
// 2: wrong usage. Asked to end (SIGTERM), it leaves without a picture, like a user who cancels.

#include "platform/linux/screencapture/CaptureArguments.h"
#include "platform/linux/screencapture/DesktopCapture.h"
#include "platform/linux/screencapture/EndSignals.h"
#include "platform/linux/screencapture/PortalCapture.h"
#include "platform/linux/screencapture/ReplacingFile.h"

#include <QGuiApplication>

#include <clocale>
#include <cstdio>
#include <memory>

namespace {

using namespace quenby;

constexpr int done = 0;
constexpr int trouble = 1;
constexpr int wrongUsage = 2;

int complain(const QString& sentence) {
    std::fprintf(stderr, "%s\n", sentence.toUtf8().constData());
    return trouble;
}

int exitCode(const MaybeError& error) { return error ? complain(error->detail(errorKey::reason).toString()) : done; }

bool hasXDisplay() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool isThere = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return isThere;
}

// Its X display, when there is one, shows only a part of what is on the screen.
bool isWaylandSession() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qgetenv("QT_QPA_PLATFORM").startsWith("wayland");
}

int captureDesktop(int argc, char** argv, EndSignals& endSignals, const QByteArray& path) {
    if (!hasXDisplay())
        return complain(QStringLiteral("There is no screen to take a picture of. Start this in a desktop session."));
    // Whatever the program that calls us uses for itself.
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication application(argc, argv);
    DesktopCapture capture(path);
    int code = done;
    QObject::connect(&capture, &DesktopCapture::ended, &application, [&code](const MaybeError& error) {
        code = exitCode(error);
        QCoreApplication::quit();
    });
    QObject::connect(&endSignals, &EndSignals::endAsked, &capture, &DesktopCapture::cancel);
    endSignals.watch();
    capture.start();
    QCoreApplication::exec();
    return code;
}

int capturePortal(int argc, char** argv, EndSignals& endSignals, const QByteArray& path) {
    QCoreApplication application(argc, argv);
    auto question = std::make_unique<QObject>();
    int code = done;
    captureByPortal(path, question.get(), [&code](const MaybeError& error) {
        code = exitCode(error);
        QCoreApplication::quit();
    });
    QObject::connect(&endSignals, &EndSignals::endAsked, &application, [&question] {
        // With it, the desktop's dialog goes.
        question.reset();
        QCoreApplication::quit();
    });
    endSignals.watch();
    QCoreApplication::exec();
    return code;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    const auto path = capturePath(QList<QByteArray>(argv + 1, argv + argc));
    if (!path) {
        std::fputs(captureUsage, stderr);
        return wrongUsage;
    }
    EndSignals endSignals;
    // Better now than when the user has chosen.
    if (const auto error = whyNotWritable(*path))
        return exitCode(error);
    return isWaylandSession() ? capturePortal(argc, argv, endSignals, *path)
                              : captureDesktop(argc, argv, endSignals, *path);
}
