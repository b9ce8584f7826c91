// Where a recording takes its pictures from: the X server, or what a Wayland desktop hands out.
//
// Threads: the object lives on the main thread, and its signals come there. What it yields is a value that the
// recording takes to a thread of its own.
#pragma once

#include "platform/CaptureSession.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QRect>
#include <QSize>
#include <QString>

#include <memory>

namespace quenby {

struct CaptureFeed {
    // The name of a "watchdog" among the elements, which is off until the first picture came: that one may take its
    // time. It ends the recording when no more pictures come and nothing says why, or pictures of another size.
    static constexpr const char* stallGuard = "stall-guard";

    // A live source as the framework's parser reads it, of one element or several in a row: "pipewiresrc fd=7 path=42".
    // A format among them is an element as well: "capsfilter caps=video/x-raw".
    // It yields raw video of any format and size, with the pointer painted, and a picture at least each fifth of a
    // second also when nothing changes. Errors of its elements, and an end of their stream, end the recording as
    // RecordingEnd::sourceGone.
    QByteArray description;
    // What of its pictures is recorded, their origin at the top left. An empty one is all of them.
    QRect crop;
    // The size of the pictures that the crop was made for. When they turn out to have another one (a desktop that hands
    // out points in place of pixels), the crop is scaled with them. Empty: they have the size that was expected.
    QSize cropSize;
    // The only size that its pictures may have: others show something else. Empty: any.
    QSize onlySize;
    // Lives as long as the elements do: an open file, the desktop's permission. May be released on any thread.
    std::shared_ptr<void> keptOpen;
};

class CaptureSource : public QObject {
    Q_OBJECT

public:
    // The framework has been started. Makes ready what can be before anybody knows what is recorded; nothing that
    // people see. Returns at once.
    virtual void warmUp() {}
    // Once. prepared() or failed() follows, never from inside the call, unless the object is destroyed before: that
    // withdraws whatever the user is asked. The caller destroys it when the recording is over.
    virtual void prepare(const CaptureInput& input) = 0;

Q_SIGNALS:
    void prepared(const quenby::CaptureFeed& feed);
    // As CaptureSession::recordingFailed() tells it: an error without a code means that the user declined.
    void failed(const quenby::Error& error);
    // After prepared(): no more pictures will come (the user ended the sharing from the desktop's own menu).
    void gone();
};

// What the desktop gave for recording a screen again without asking, by the screen's name. Each token is good once.
using ScreenCastTokens = QHash<QString, QString>;

// The one for the desktop that this program runs on. The tokens outlive it.
std::unique_ptr<CaptureSource> makeCaptureSource(std::shared_ptr<ScreenCastTokens> tokens);

} // namespace quenby
