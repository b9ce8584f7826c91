// One recording, from the overlay to the movie: it shows the overlays, turns what is selected there into what is
// captured, and ends with a movie or with the reason why there is none.
//
// Threads: the main thread. What it is given outlives it. Destroying it ends a recording that runs; its movie stays
// unfinished in the folder (platform/CaptureSession.h).
#pragma once

#include "core/CompletionGate.h"
#include "core/TimeSource.h"
#include "platform/CaptureSession.h"
#include "recording/RecordingState.h"

#include <QObject>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace quenby {

class CacheFolders;
class OverlayWindow;

struct RecordingServices {
    CaptureSessions& sessions;
    Displays& displays;
    CacheFolders& cacheFolders;
    QString folderName; // below the caches
    std::shared_ptr<TimeSource> timeSource;
    RecordingState& state;
    // Gets the program's own windows out of the way; whether there were any.
    std::function<bool()> minimizeAllWindows;
};

class ScreenRecording : public QObject {
    Q_OBJECT

public:
    // The capture session is made ready at once. Fails as the session does.
    static Result<std::unique_ptr<ScreenRecording>> create(const RecordingServices& services);
    ~ScreenRecording() override;

    // Shows one overlay for each display. Nothing happens while something is recorded or selected already.
    void setDisplayAndCropRect();
    // The overlay's choice, in its own coordinates: points, the origin at the display's lower left.
    void drawMouseBoxView_didSelectRect(const Display& overlaysDisplay, const QRectF& rect);
    // Into the recordings' folder, under a name of this second. Of two in the same second, the later one is dropped.
    void startRecording();
    void stopRecording();

Q_SIGNALS:
    // The selection has no area worth recording. Nothing is recorded.
    void selectionTooSmall();
    // The user left the overlay, or the displays changed below it.
    void abandoned();
    // It will begin in a moment.
    void selected();
    void recordingStarted();
    // There is a movie; with a sentence when it ended before the user ended it.
    void recordingFinished(const QByteArray& path, const QString& note);
    // There is none. The message is empty when nothing has to be told.
    void recordingFailed(const QString& message, const QString& information);

private:
    ScreenRecording(const RecordingServices& services, std::unique_ptr<CaptureSession> session);

    void showOverlays();
    void closeOverlays();
    void addDisplayInputToCaptureSession(const Display& display, const QRectF& cropRect);
    void displaysChanged();
    void finished(const QByteArray& path, RecordingEnd end);

    const RecordingServices services_;
    const std::unique_ptr<CaptureSession> session_;
    const Display display_; // the main one as it was at the start
    std::vector<std::unique_ptr<OverlayWindow>> shadeWindows_;
    std::unique_ptr<Timer> soon_; // the next step: the overlays, or the recording
    bool isStarted_ = false;
    bool isDisplayGone_ = false;
};

} // namespace quenby
