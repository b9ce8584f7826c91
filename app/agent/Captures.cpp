#include "app/agent/Captures.h"

#include "app/agent/CacheFolderNames.h"
#include "app/agent/LaunchTrace.h"
#include "app/uploads/UploadPipeline.h"
#include "app/uploads/UploadRequest.h"
#include "platform/PlatformServices.h"

#include <QDir>
#include <QFile>
#include <QSet>

namespace quenby {
namespace {

// In the order in which they are removed. Pictures that were copied are never uploaded, and so never needed.
const QStringList& foldersOfUploads() {
    static const QStringList folders{cacheFolderName::screenshots, cacheFolderName::recordings};
    return folders;
}

// Removes the files that are not needed; whether there are others.
bool removeOthers(const QString& folder, const QSet<QByteArray>& needed) {
    if (QFileInfo(folder).isSymLink()) // not ours
        return false;
    bool areAnyNeeded = false;
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden);
    for (const QFileInfo& file : files) {
        if (needed.contains(QFile::encodeName(file.filePath())))
            areAnyNeeded = true;
        else
            QFile::remove(file.filePath());
    }
    return areAnyNeeded;
}

} // namespace

Captures::Captures(PlatformServices& platform, UploadPipeline& uploads, const std::shared_ptr<TimeSource>& timeSource,
                   MinimizeWindows minimizeOtherWindows, WindowProvider window)
    : platform_(platform)
    , uploads_(uploads)
    , minimizeOtherWindows_(std::move(minimizeOtherWindows))
    , recordings_({*platform.captureSessions, *platform.moviePlayers, *platform.displays, *platform.cacheFolders,
                   *platform.alerts, *platform.filePanels, *platform.fileBrowser, *platform.opener,
                   platform.makeStopItemHosts, timeSource, [this] { return minimizeAllWindows(); }})
    , screenshots_({*platform.screenCaptureTool, *platform.alerts, *platform.cacheFolders, timeSource}, window)
    , clipboard_({*platform.pasteboard, *platform.alerts, *platform.cacheFolders, timeSource}, window)
    , timeSource_(timeSource) {
    connect(&recordings_, &RecordingFlow::uploadRequested, this,
            [this](const QByteArray& path) { uploadInto(QStringLiteral("Screen Cast"), path); });
    connect(&recordings_, &RecordingFlow::reached, this, &traceLaunch);
    connect(&screenshots_, &ScreenshotCapture::minimizeAllWindowsRequested, this, &Captures::minimizeAllWindows);
    connect(&screenshots_, &ScreenshotCapture::uploadRequested, this, &Captures::uploadInto);
    connect(&clipboard_, &ClipboardUpload::uploadRequested, &uploads_,
            qOverload<const QString&, const QList<QByteArray>&>(&UploadPipeline::uploadInGoogleDriveIn));
}

Captures::~Captures() = default;

void Captures::beginWatching() {
    share_ = std::make_unique<ScreenshotShare>(*platform_.screenshotQuery, *platform_.defaults, timeSource_->now());
    connect(share_.get(), &ScreenshotShare::uploadRequested, this, [this](const QByteArray& path) {
        // Some desktops' tools save into their own folder first: that picture is uploaded anyway.
        if (!screenshots_.isCapturing())
            uploadInto(QStringLiteral("Screen Shot"), path);
    });
    platform_.screenshotQuery->start();
}

// One that is on its way into the Drive was not interrupted: it would be uploaded twice.
void Captures::showInterruptedRecordings() {
    const UploadQueue& queue = uploads_.queue();
    if (queue.isReading()) {
        connect(&queue, &UploadQueue::wasRead, this, &Captures::showInterruptedRecordings,
                static_cast<Qt::ConnectionType>(Qt::SingleShotConnection | Qt::UniqueConnection));
        return;
    }
    recordings_.leaveInterrupted(queue.paths());
    recordings_.showInterruptedRecordings();
}

void Captures::leaveAccount() { clipboard_.cancel(); }

void Captures::uploadInto(const QString& folderName, const QByteArray& path) {
    uploads_.uploadInGoogleDriveIn(folderName, path);
}

bool Captures::minimizeAllWindows() {
    const bool wasReviewVisible = recordings_.minimizeReviewWindow();
    return minimizeOtherWindows_() || wasReviewVisible;
}

void Captures::removeFiles() {
    const UploadQueue& queue = uploads_.queue();
    if (isRecording() || !queue.areAllKnown())
        return;
    const QSet<QByteArray> needed = queue.paths();
    for (const QString& folder : foldersOfUploads()) {
        if (folder == cacheFolderName::recordings && recordings_.areInterruptedWaiting())
            continue;
        if (!removeOthers(platform_.cacheFolders->path(folder), needed))
            platform_.cacheFolders->remove(folder);
    }
}

} // namespace quenby
