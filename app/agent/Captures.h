// What is captured on this computer and goes into the Drive: screenshots, the clipboard, and screen recordings.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/clipboard/ClipboardUpload.h"
#include "app/recording/RecordingFlow.h"
#include "app/screenshots/ScreenshotCapture.h"
#include "app/screenshots/ScreenshotShare.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class TimeSource;
class UploadPipeline;
struct PlatformServices;

class Captures : public QObject {
    Q_OBJECT

public:
    // Minimises the program's windows but for the review window; whether one was visible.
    using MinimizeWindows = std::function<bool()>;

    // Alerts belong to the window.
    Captures(PlatformServices& platform, UploadPipeline& uploads, const std::shared_ptr<TimeSource>& timeSource,
             MinimizeWindows minimizeOtherWindows, WindowProvider window);
    ~Captures() override;

    // At the launch: screenshots that are made from now on are noticed.
    void beginWatching();
    // Once this is the only program of its user: what an earlier one left unfinished is found; and shown once the
    // windows of the launch are there, which would cover it.
    void findInterruptedRecordings() { recordings_.findInterruptedRecordings(); }
    void showInterruptedRecordings();
    // At sign-out: what was about to be asked for the account is not.
    void leaveAccount();

    void captureAndUploadFile() { screenshots_.captureAndUploadFile(); }
    void fetchLastFromClipBoard() { clipboard_.fetchLastFromClipBoard(); }
    void screenCastAction() { recordings_.startRecordingSelf(); }

    // Or saving what was recorded.
    bool isRecording() const { return recordings_.isRecording() || recordings_.isSaving(); }
    // At the end of the program: captured files that nothing needs any more. What is on its way into the Drive, or into
    // a movie, stays; so do recordings that nobody was shown.
    void removeFiles();

private:
    bool minimizeAllWindows();
    void uploadInto(const QString& folderName, const QByteArray& path);

    PlatformServices& platform_;
    UploadPipeline& uploads_;
    const MinimizeWindows minimizeOtherWindows_;
    RecordingFlow recordings_;
    ScreenshotCapture screenshots_;
    ClipboardUpload clipboard_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<ScreenshotShare> share_; // from beginWatching() on
};

} // namespace quenby
