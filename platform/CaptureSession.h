// Records what a display shows into a movie file.
//
// Threads: the main thread; the work is done on threads of the session's own, and nothing here blocks. A session
// records once. Destroying it ends a running recording like stopRecording(), but nobody hears of the file.
//
// The movie: QuickTime, H.264, constant frame rate, no sound. While it is recorded it lies beside its place under a
// hidden name (unfinishedMoviePath()) and can be played up to its last seconds whatever happens to the program; it gets
// its name when it is whole. Nothing that exists is ever replaced.
#pragma once

#include "core/Result.h"
#include "platform/Displays.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QObject>
#include <QRect>

#include <memory>

namespace quenby {

struct CaptureInput {
    Display display;
    // What of it, in its pixels, the origin at its top left. An empty one is all of it. What lies outside is left out,
    // and odd sizes grow by one pixel, inwards where there is no room: the encoding knows even ones only.
    QRect cropRect;
    int maximumFrameRate = 30; // frames a second
};

// What can end a recording before the user does. The movie up to there is good.
enum class RecordingEnd { asked, diskFull, encoderFailed, sourceGone };

class CaptureSession : public QObject {
    Q_OBJECT

public:
    // Before the recording starts.
    virtual void setScreenInput(const CaptureInput& input) = 0;
    virtual const CaptureInput& screenInput() const = 0;
    // The movie will lie there: an absolute path in a folder that exists, as bytes.
    virtual void startRecording(const QByteArray& path) = 0;
    // The end is told by recordingFinished() or recordingFailed(), always.
    virtual void stopRecording() = 0;

Q_SIGNALS:
    // The first frame was taken.
    void recordingStarted();
    void recordingFinished(const QByteArray& path, quenby::RecordingEnd end);
    // There is no movie. The reason among the error's details says what happened and what to do. An error without a
    // code (0) means that the user declined when the desktop asked what may be recorded: nothing has to be told.
    void recordingFailed(const quenby::Error& error);
};

class CaptureSessions : public PlatformService {
public:
    // Makes everything ready, so that startRecording() starts at once. Fails with a reason for people.
    virtual Result<std::unique_ptr<CaptureSession>> create() = 0;
};

// The hidden name of a movie that is not whole yet: "/a/b.mov" lies at "/a/.b.mov.part".
QByteArray unfinishedMoviePath(const QByteArray& path);

} // namespace quenby
