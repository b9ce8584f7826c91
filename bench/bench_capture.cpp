// Records the screen for a while and says how fast that began and ended.
//
//   bench_capture SECONDS PICTURES-A-SECOND ENCODER FILE [--at-once]
//
// The session is made beforehand and rests, as it does while people select what they want, unless it is asked for at
// once. Prints a line a figure, its name and its value: first_frame_ms, from the order to record (or with --at-once
// from the making of the session) to the first frame; end_ms, from the order to stop to the whole movie.

#include "platform/linux/media/PluginMedia.h"
#include "platform/linux/modules/ModuleFile.h"

#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <cstdio>

using namespace quenby;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void rest(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

quenby::Display wholeScreen() {
    const QScreen& screen = *QGuiApplication::primaryScreen();
    const qreal scale = screen.devicePixelRatio();
    return {.identifier = 1,
            .name = screen.name(),
            .frame = screen.geometry(),
            .pixels = {screen.geometry().topLeft(), (QSizeF(screen.size()) * scale).toSize()},
            .scale = scale};
}

int record(std::chrono::seconds time, int rate, const QString& encoder, const QByteArray& file, bool isAtOnce) {
    const auto media = std::make_shared<LoadedMedia>(moduleFolders());
    const auto begin = Clock::now();
    auto made = PluginCaptureSessions(media, {.encoders = {encoder}}).create();
    if (!made)
        qFatal("%s", qPrintable(made.error().description()));
    const std::unique_ptr<CaptureSession> session = std::move(made).value();
    if (!isAtOnce)
        rest(1s);

    QEventLoop loop;
    QObject::connect(session.get(), &CaptureSession::recordingFailed, &loop,
                     [](const Error& error) { qFatal("%s", qPrintable(error.description())); });
    QObject::connect(session.get(), &CaptureSession::recordingStarted, &loop, &QEventLoop::quit);
    session->setScreenInput({.display = wholeScreen(), .cropRect = {}, .maximumFrameRate = rate});
    const auto asked = isAtOnce ? begin : Clock::now();
    session->startRecording(file);
    loop.exec();
    std::printf("first_frame_ms %.3f\n", millisecondsSince(asked));

    rest(time);
    QObject::connect(session.get(), &CaptureSession::recordingFinished, &loop,
                     [&loop](const QByteArray&, RecordingEnd end) {
                         if (end != RecordingEnd::asked)
                             qFatal("the recording ended by itself");
                         loop.quit();
                     });
    const auto stopped = Clock::now();
    session->stopRecording();
    loop.exec();
    std::printf("end_ms %.3f\n", millisecondsSince(stopped));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const bool isAtOnce = arguments.value(5) == QLatin1String("--at-once");
    if (arguments.size() != (isAtOnce ? 6 : 5)) {
        std::fputs("usage: bench_capture SECONDS PICTURES-A-SECOND ENCODER FILE [--at-once]\n", stderr);
        return 2;
    }
    return record(std::chrono::seconds(arguments.at(1).toInt()), arguments.at(2).toInt(), arguments.at(3),
                  QFile::encodeName(arguments.at(4)), isAtOnce);
}
