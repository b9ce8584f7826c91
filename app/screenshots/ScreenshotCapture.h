// "Capture & Upload Screenshot": lets the user choose a part of the screen with the desktop's tool, and uploads the
// picture into the Drive's folder "Screen Shot". The picture lies in the cache folder "ScreenShotCaches" and stays
// there.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/uploads/FailureAlerts.h"
#include "core/Error.h"
#include "core/TimeSource.h"

#include <QByteArray>
#include <QObject>

#include <memory>

namespace quenby {

class CacheFolders;
class ScreenCaptureTool;

class ScreenshotCapture : public QObject {
    Q_OBJECT

public:
    struct Services {
        ScreenCaptureTool& tool;
        Alerts& alerts;
        CacheFolders& cacheFolders;
        std::shared_ptr<TimeSource> timeSource;
    };

    // The alerts belong to the window.
    ScreenshotCapture(const Services& services, WindowProvider window, QObject* parent = nullptr);
    ~ScreenshotCapture() override;

    // Does nothing while the tool is at work.
    void captureAndUploadFile();
    // From the command until its picture is on its way, or there is none.
    bool isCapturing() const { return isCapturing_; }

Q_SIGNALS:
    // They would be in the picture.
    void minimizeAllWindowsRequested();
    void uploadRequested(const QString& folderName, const QByteArray& path);

private:
    void capture(const QByteArray& path);
    void ended(const QByteArray& path, const MaybeError& trouble);
    void tellTrouble(const QString& reason);

    const Services services_;
    const WindowProvider window_;
    bool isCapturing_ = false;
    std::unique_ptr<Timer> windowsLeaving_;
};

} // namespace quenby
