// What is read from an X server besides what windows show: the pointer, and errors.
#include "platform/linux/media/engine/capture/GstCaptureSession.h"
#include "platform/linux/media/engine/capture/XErrorTrap.h"
#include "tests/support/MovieFrames.h"
#include "tests/support/MovingPattern.h"
#include "tests/support/PatternProcess.h"

#include <QCursor>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <thread>

// Last: its macros are words of others.
#include <X11/Xlib.h>
#undef Bool

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 60'000; // ms; only a hang takes so long
const QRect desktop(0, 0, 1280, 800);

// Pixels that are nothing like the others, as no encoder makes them.
int differences(const QImage& one, const QImage& other, const QRect& place) {
    int count = 0;
    for (int y = place.top(); y <= place.bottom(); ++y)
        for (int x = place.left(); x <= place.right(); ++x)
            count += std::abs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y))) > 90;
    return count;
}

int errorsOfOthers = 0;
int countError(::Display*, XErrorEvent*) { return ++errorsOfOthers; }

// An error comes from the server and is handled on this thread.
void provokeError() {
    ::Display* const display = XOpenDisplay(nullptr);
    XDestroyWindow(display, 1);
    XSync(display, False);
    XCloseDisplay(display);
}

} // namespace

class tst_screenreading : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pointerIsSeen() {
        PatternProcess pattern;
        QVERIFY(pattern.start(desktop, 30));
        const QPoint pointer(403, 311);
        QCursor::setPos(pointer);
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("A recording.mov"));
        CaptureEngine engine;
        const auto session = engine.createSession({});
        QSignalSpy started(session.get(), &CaptureSession::recordingStarted);
        QSignalSpy finished(session.get(), &CaptureSession::recordingFinished);
        quenby::Display display;
        display.identifier = 1;
        display.pixels = desktop;
        session->setScreenInput({.display = display, .cropRect = {}, .maximumFrameRate = 30});
        session->startRecording(QFile::encodeName(path));
        QVERIFY(started.wait(patience));
        const size_t enough = pattern.shown().size() + 20;
        QTRY_VERIFY_WITH_TIMEOUT(pattern.shown().size() >= enough, patience);
        session->stopRecording();
        QVERIFY(!finished.isEmpty() || finished.wait(patience));

        MovieFrames movie(path);
        const QImage frame = movie.next();
        const auto reading = readPattern(frame);
        QVERIFY(reading);
        const QImage shown = patternPicture(desktop.size(), reading->number);
        const QRect near(pointer - QPoint(20, 20), QSize(48, 48));
        QVERIFY(differences(frame, shown, near) > 20);
        QCOMPARE(differences(frame, shown, desktop), differences(frame, shown, near));
    }

    // Qt's own function for errors, or another toolkit's, goes on hearing of those that are not the recording's.
    void errorsOfOthersGoOn() {
        XSetErrorHandler(&countError);
        const auto seen = std::make_shared<std::atomic<bool>>(false);
        {
            const XErrorTrap trap(seen);
            provokeError();
            QVERIFY(*seen);
            QCOMPARE(errorsOfOthers, 0);
            std::thread(provokeError).join();
            QCOMPARE(errorsOfOthers, 1);
        }
        provokeError();
        QCOMPARE(errorsOfOthers, 2);
    }
};

QTEST_MAIN(tst_screenreading)
#include "tst_screenreading.moc"
