#include "app/uploads/UploadPipeline.h"

#include "app/cli/DisplayText.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "platform/Defaults.h"
#include "platform/FilePanels.h"

#include <QLoggingCategory>

#include <unistd.h>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(uploadsLog, "quenby.uploads", QtInfoMsg)

const QString plainType = QStringLiteral("File");

} // namespace

UploadPipeline::UploadPipeline(const UploadServices& services, WindowProvider windowForSheets, UploadLimits limits,
                               QObject* parent)
    : QObject(parent)
    , defaults_(services.defaults)
    , filePanels_(services.filePanels)
    , folders_(services.driveService, services.timeSource, limits.patience)
    , queue_(services.driveService, folders_, services.timeSource, limits)
    , notices_(services.notifications, services.pasteboard, services.opener, services.timeSource)
    , failures_(services.alerts, std::move(windowForSheets))
    , captureLinks_({services.driveService, services.timeSource, services.defaults, services.notifications,
                     services.pasteboard, services.opener, failures_}) {
    // A change of ours, as an upload is.
    connect(&captureLinks_, &CaptureLinks::movedToTrash, this, &UploadPipeline::uploaded);
    connect(&queue_, &UploadQueue::started, this, &UploadPipeline::started);
    connect(&queue_, &UploadQueue::progressed, this, &UploadPipeline::progressed);
    connect(&queue_, &UploadQueue::changed, this, [this](qint64 number) {
        const QueuedUpload* const upload = queue_.find(number);
        if (upload && upload->state != UploadState::running && upload->request.path == slot_.path())
            forgetProgress(); // interrupted: another one may take its place
    });
    connect(&queue_, &UploadQueue::finished, this, &UploadPipeline::finished);
    connect(&queue_, &UploadQueue::leftOut, this, &UploadPipeline::leftOut);
    connect(&queue_, &UploadQueue::sourceChanged, this, &UploadPipeline::sourceChanged);
    connect(&queue_, &UploadQueue::over, this, [](const UploadRequest& request) {
        if (request.removeSource)
            ::unlink(request.path.constData()); // files only: a folder stays
    });
    connect(&folders_, &DestinationFolders::madeFolder, this, &UploadPipeline::RootFolderIdChanged);
}

UploadPipeline::~UploadPipeline() = default;

void UploadPipeline::SelectAndUploadFile(QWidget* window) {
    selectAndUpload(window, QStringLiteral("Upload File"), false);
}

void UploadPipeline::SelectAndUploadFileAndShare(QWidget* window) {
    selectAndUpload(window, QStringLiteral("Upload & Share File"), true);
}

void UploadPipeline::selectAndUpload(QWidget* window, const QString& title, bool needToShare) {
    filePanels_.openFiles(window, title, QStringLiteral("Upload"), this,
                          [this, needToShare](const QList<QByteArray>& paths) {
                              QList<UploadRequest> requests;
                              for (const QByteArray& path : paths)
                                  requests.append({.path = path, .typeUpload = plainType, .needToShare = needToShare});
                              queue_.add(requests);
                          });
}

void UploadPipeline::UploadFilesToServer(const QList<QByteArray>& paths) {
    QList<UploadRequest> requests;
    for (const QByteArray& path : paths)
        requests.append({.path = path, .typeUpload = plainType});
    queue_.add(requests);
}

void UploadPipeline::uploadInGoogleDriveIn(const QString& folderName, const QByteArray& path) {
    queue_.add({.path = path, .typeUpload = folderName, .folderName = folderName, .isCapture = true});
}

void UploadPipeline::uploadInGoogleDriveIn(const QString& folderName, const QList<QByteArray>& paths) {
    QList<UploadRequest> requests;
    for (const QByteArray& path : paths)
        requests.append(
            {.path = path, .typeUpload = folderName, .folderName = folderName, .mayBeGone = true, .isCapture = true});
    queue_.add(requests);
}

void UploadPipeline::uploadUsingThisQuery(const std::shared_ptr<GTLQueryDrive>& query, const QByteArray& path,
                                          bool needToShare, const QString& typeUpload, bool removeSource) {
    queue_.add({.path = path,
                .typeUpload = typeUpload,
                .needToShare = needToShare,
                .removeSource = removeSource,
                .query = query});
}

void UploadPipeline::started(const UploadRequest& request) {
    if (slot_.start(request.path) != ProgressSlot::Change::none)
        Q_EMIT uploadStatusChanged();
    qCInfo(uploadsLog, "Start uploading %s", qUtf8Printable(printablePath(request.path)));
}

void UploadPipeline::progressed(const UploadRequest& request, qint64 sent, qint64 total) {
    const auto change = slot_.report(request.path, sent, total);
    if (change != ProgressSlot::Change::none)
        Q_EMIT uploadStatusChanged();
    if (change == ProgressSlot::Change::taken)
        Q_EMIT statusItemRefreshWanted();
}

void UploadPipeline::finished(const UploadRequest& request, const Result<UploadRun::Outcome>& outcome) {
    slot_.release(100);
    Q_EMIT uploadStatusChanged();
    if (outcome)
        succeeded(request, *outcome);
    else
        giveErrorAlert(QStringLiteral("Error"), request.typeUpload + QStringLiteral(" Upload Failed"),
                       nameForPeople(request.path) + QStringLiteral(": ") + outcome.error().description());
}

// Nothing that the user has to do anything about.
void UploadPipeline::leftOut(const UploadRequest& request, const Error& error) {
    qCWarning(uploadsLog, "%s was not uploaded: %s", qUtf8Printable(printablePath(request.path)),
              qUtf8Printable(error.description()));
}

void UploadPipeline::sourceChanged(const UploadRequest& request) {
    forgetProgress();
    giveErrorAlert(
        tr("A file has changed"),
        tr("It was not uploaded, because it is not the file any more that was meant. Retry it in the list of "
           "uploads to upload it as it is now."),
        nameForPeople(request.path));
}

void UploadPipeline::succeeded(const UploadRequest& request, const UploadRun::Outcome& outcome) {
    const bool isTold = captureLinks_.captured(request, outcome);
    if (!isTold && defaults_.boolForKey(defaultsKey::notificationDisplay, true))
        notificationForSuccess(QStringLiteral("Quenby New Update!"),
                               nameForPeople(request.path) + QStringLiteral(" added"), outcome.alternateLink);
    Q_EMIT uploaded(outcome.identifier);
    if (request.needToShare)
        Q_EMIT shareRequested(outcome.identifier, outcome.originalFilename);
}

void UploadPipeline::cancelEverything() {
    folders_.cancelAll();
    queue_.cancelAll();
    forgetProgress();
}

void UploadPipeline::hold() {
    captureLinks_.forget();
    queue_.setAccount({});
    folders_.cancelAll();
    forgetProgress();
}

void UploadPipeline::release() {
    queue_.release();
    folders_.cancelAll();
    forgetProgress();
}

void UploadPipeline::forgetProgress() {
    slot_.release(0);
    Q_EMIT uploadStatusChanged();
}

void UploadPipeline::tryNow() {
    queue_.tryNow();
    folders_.tryNow();
}

void UploadPipeline::notificationForSuccess(const QString& title, const QString& info, const QString& link) {
    notices_.tell(title, info, link);
}

void UploadPipeline::giveErrorAlert(const QString& title, const QString& info, const QString& detail) {
    failures_.tell(title, info, detail);
}

} // namespace quenby
