#include "app/screenshots/ScreenshotCapture.h"

#include "app/agent/CacheFolderNames.h"
#include "core/CaptureNames.h"
#include "core/SafeFileName.h"
#include "platform/CacheFolders.h"
#include "platform/ScreenCaptureTool.h"

#include <QFile>

#include <sys/stat.h>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// Until the windows are off the screen, and the menu that the command was chosen from: window managers let them fade.
constexpr auto timeToLeave = 250ms;

bool isThere(const QByteArray& path) {
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0;
}

// A picture of the same second may be on its way to the Drive.
QByteArray freePath(const QByteArray& folder, const QByteArray& name) {
    int number = 1;
    QByteArray path = folder + '/' + name;
    while (isThere(path))
        path = folder + '/' + numberedFileName(name, ++number);
    return path;
}

} // namespace

ScreenshotCapture::ScreenshotCapture(const Services& services, WindowProvider window, QObject* parent)
    : QObject(parent)
    , services_(services)
    , window_(std::move(window)) {}

ScreenshotCapture::~ScreenshotCapture() = default;

void ScreenshotCapture::captureAndUploadFile() {
    if (isCapturing_)
        return;
    if (const QString reason = services_.tool.unavailableBecause(); !reason.isEmpty())
        return tellTrouble(reason);
    const Result<QString> folder = services_.cacheFolders.create(cacheFolderName::screenshots);
    if (!folder)
        return tellTrouble(folder.error().detail(errorKey::reason).toString());
    isCapturing_ = true;
    const QByteArray path =
        freePath(QFile::encodeName(*folder), QFile::encodeName(screenShotName(services_.timeSource->now())));
    Q_EMIT minimizeAllWindowsRequested();
    windowsLeaving_ = services_.timeSource->startTimer(timeToLeave, [this, path] { capture(path); });
}

void ScreenshotCapture::capture(const QByteArray& path) {
    services_.tool.capture(path, this, [this, path](const MaybeError& trouble) { ended(path, trouble); });
}

void ScreenshotCapture::ended(const QByteArray& path, const MaybeError& trouble) {
    isCapturing_ = false;
    if (trouble)
        return tellTrouble(trouble->detail(errorKey::reason).toString());
    if (isThere(path)) // who cancels leaves none
        Q_EMIT uploadRequested(QStringLiteral("Screen Shot"), path);
}

void ScreenshotCapture::tellTrouble(const QString& reason) {
    services_.alerts.show(window_(), {QStringLiteral("Error"), reason, {}, {}});
}

} // namespace quenby
