// Records a part of the screen until it is told to stop by a line on its input, or killed: record_screen PATH X Y W H.
// It says "recording" when it does, and at the end the number of what ended it.
#include "platform/linux/media/engine/capture/GstCaptureSession.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

using namespace quenby;

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 6)
        return 2;
    CaptureEngine engine;
    const std::unique_ptr<CaptureSession> session = engine.createSession({});
    CaptureInput input;
    input.display.identifier = 1;
    input.display.pixels =
        QRect(arguments[2].toInt(), arguments[3].toInt(), arguments[4].toInt(), arguments[5].toInt());
    session->setScreenInput(input);
    QObject::connect(session.get(), &CaptureSession::recordingStarted, [] {
        std::puts("recording");
        std::fflush(stdout);
    });
    QObject::connect(session.get(), &CaptureSession::recordingFinished, [](const QByteArray&, RecordingEnd end) {
        std::printf("ended: %d\n", static_cast<int>(end));
        QCoreApplication::exit(0);
    });
    QObject::connect(session.get(), &CaptureSession::recordingFailed, [](const Error& error) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(error.description()));
        QCoreApplication::exit(1);
    });
    QSocketNotifier told(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&told, &QSocketNotifier::activated, [&] {
        told.setEnabled(false);
        session->stopRecording();
    });
    session->startRecording(arguments[1].toLocal8Bit());
    return QCoreApplication::exec();
}
