#include "app/uploads/UploadPipeline.h"

#include "app/cli/DisplayText.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "platform/Defaults.h"
#include "platform/FilePanels.h"

#include <QLoggingCategory>

#include <algorithm>

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
    , timeSource_(services.timeSource)
    , queue_(services.driveService, services.timeSource, limits)
    , folders_(services.driveService, services.timeSource, limits.patience)
    , notices_(services.notifications, services.pasteboard, services.opener, services.timeSource)
    , failures_(services.alerts, std::move(windowForSheets)) {
    connect(&queue_, &UploadQueue::started, this, &UploadPipeline::started);
    connect(&queue_, &UploadQueue::progressed, this, &UploadPipeline::progressed);
    connect(&queue_, &UploadQueue::finished, this, &UploadPipeline::finished);
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
                              for (const QByteArray& path : paths)
                                  add({path, plainType, {}, needToShare, false});
                          });
}

void UploadPipeline::UploadFilesToServer(const QList<QByteArray>& paths) {
    for (const QByteArray& path : paths)
        add({path, plainType});
}

void UploadPipeline::uploadInGoogleDriveIn(const QString& folderName, const QByteArray& path) {
    add({path, folderName, folderName});
}

void UploadPipeline::uploadInGoogleDriveIn(const QString& folderName, const QList<QByteArray>& paths) {
    QList<int> numbers;
    for (const QByteArray& path : paths)
        numbers.append(await({path, folderName, folderName}));
    folders_.find(folderName, this,
                  [this, numbers](const Result<QString>& identifier) { folderOfManyFound(numbers, identifier); });
}

void UploadPipeline::uploadUsingThisQuery(const std::shared_ptr<GTLQueryDrive>& query, const QByteArray& path,
                                          bool needToShare, const QString& typeUpload, bool removeSource) {
    add({path, typeUpload, {}, needToShare, removeSource, query});
}

void UploadPipeline::add(const UploadRequest& request) {
    if (request.folderName.isEmpty())
        return queue_.add(request);
    const int number = await(request);
    folders_.find(request.folderName, this,
                  [this, number](const Result<QString>& identifier) { folderFound(number, identifier); });
}

int UploadPipeline::await(const UploadRequest& request) {
    awaitingFolder_.emplace(++lastNumber_, request);
    return lastNumber_;
}

void UploadPipeline::folderFound(int number, const Result<QString>& identifier) {
    const auto request = awaitingFolder_.extract(number);
    if (request.empty()) // cancelled on the way
        return;
    if (!identifier) {
        qCWarning(uploadsLog, "%s was not uploaded: %s", qUtf8Printable(printablePath(request.mapped().path)),
                  qUtf8Printable(identifier.error().description()));
        return;
    }
    request.mapped().parentId = *identifier;
    queue_.add(request.mapped());
}

void UploadPipeline::folderOfManyFound(const QList<int>& numbers, const Result<QString>& identifier) {
    QList<int> left; // of those that were not cancelled on the way
    QList<QByteArray> paths;
    for (const int number : numbers) {
        if (const auto request = awaitingFolder_.find(number); request != awaitingFolder_.end()) {
            left.append(number);
            paths.append(request->second.path);
        }
    }
    lookAtFiles(timeSource_, paths, this, [this, left, identifier](const QList<FileKind>& kinds) {
        leaveOutMissing(left, kinds);
        for (const int number : left)
            folderFound(number, identifier);
    });
}

void UploadPipeline::leaveOutMissing(const QList<int>& numbers, const QList<FileKind>& kinds) {
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        if (kinds.at(i) == FileKind::missing)
            awaitingFolder_.erase(numbers.at(i));
    }
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
    if (request.removeSource)
        ::unlink(request.path.constData()); // files only: a folder stays
}

void UploadPipeline::succeeded(const UploadRequest& request, const UploadRun::Outcome& outcome) {
    if (defaults_.boolForKey(defaultsKey::notificationDisplay, true))
        notificationForSuccess(QStringLiteral("Quenby New Update!"),
                               nameForPeople(request.path) + QStringLiteral(" added"), outcome.alternateLink);
    Q_EMIT uploaded(outcome.identifier);
    if (request.needToShare)
        Q_EMIT shareRequested(outcome.identifier, outcome.originalFilename);
}

QList<QByteArray> UploadPipeline::remaining() const {
    QList<QByteArray> lines;
    for (const UploadRequest& request : queue_.remaining())
        lines.append(lineFromRequest(request));
    for (const auto& [number, request] : awaitingFolder_)
        lines.append(lineFromRequest(request));
    return lines;
}

bool UploadPipeline::isAnyIn(const QByteArray& folder) const {
    const auto isIn = [below = QByteArray(folder + '/')](const UploadRequest& request) {
        return request.path.startsWith(below);
    };
    const QList<UploadRequest> queued = queue_.remaining();
    return std::any_of(queued.begin(), queued.end(), isIn) ||
           std::any_of(awaitingFolder_.begin(), awaitingFolder_.end(),
                       [&isIn](const auto& awaiting) { return isIn(awaiting.second); });
}

void UploadPipeline::resume(const QList<QByteArray>& lines) {
    for (const QByteArray& line : lines) {
        if (const auto request = requestFromLine(line))
            add(*request);
        else
            qCWarning(uploadsLog, "an upload that was handed over can't be read and is left out");
    }
}

void UploadPipeline::cancelEverything() {
    awaitingFolder_.clear();
    folders_.cancelAll();
    queue_.cancelAll();
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
