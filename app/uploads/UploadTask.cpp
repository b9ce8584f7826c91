#include "app/uploads/UploadTask.h"

#include "driveapi/GTLServiceDrive.h"

#include <QPointer>

#include <cerrno>

namespace quenby {

UploadTask::UploadTask(Surroundings surroundings, QueuedUpload upload)
    : surroundings_(std::move(surroundings))
    , upload_(std::move(upload)) {}

UploadTask::~UploadTask() = default;

void UploadTask::start() {
    if (isStopped_) // by whoever heard that it has its turn
        return;
    const UploadRequest& request = upload_.request;
    if (request.folderName.isEmpty() || !request.parentId.isEmpty())
        return openSource();
    surroundings_.folders.find(request.folderName, this, [this](const Result<QString>& identifier) {
        if (isStopped_)
            return;
        if (!identifier) {
            Q_EMIT leftOut(identifier.error());
            return;
        }
        upload_.request.parentId = *identifier;
        Q_EMIT folderFound(*identifier);
        openSource();
    });
}

void UploadTask::tryNow() {
    if (run_)
        run_->tryNow();
}

void UploadTask::stop() {
    isStopped_ = true;
    deleteLater();
}

void UploadTask::setMaxSendSpeed(qint64 bytesPerSecond) {
    maxSendSpeed_ = bytesPerSecond;
    if (run_)
        run_->setMaxSendSpeed(bytesPerSecond);
}

void UploadTask::openSource() {
    Q_EMIT started();
    opening_ = std::make_unique<SourceOpening>(*surroundings_.timeSource, upload_.request.path, this,
                                               [this](const Result<SourceFile>& source) { sourceOpened(source); });
}

void UploadTask::sourceOpened(const Result<SourceFile>& source) {
    opening_.reset();
    if (isStopped_)
        return;
    if (!source) {
        if (upload_.request.mayBeGone && source.error().is(errorDomain::posix, ENOENT))
            Q_EMIT leftOut(source.error());
        else
            Q_EMIT finished(source.error());
        return;
    }
    if (isAnotherFile(source->facts())) {
        Q_EMIT foundChange();
        return;
    }
    Q_EMIT opened(source->facts());
    send(*source);
}

// As long as nobody has interrupted it, a file that grows while it waits for its turn is the one that was meant.
bool UploadTask::isAnotherFile(const SourceFacts& now) const {
    return !upload_.isFresh && upload_.source && *upload_.source != now;
}

void UploadTask::send(const SourceFile& source) {
    UploadRun::Settings settings;
    settings.patience = surroundings_.patience;
    settings.parentId = upload_.request.parentId;
    settings.query = upload_.request.query;
    settings.session = upload_.session;
    settings.identifiers = surroundings_.identifiers;
    settings.keep = [task = QPointer(this)](const UploadSession& session, const std::function<void()>& kept) {
        if (!task || task->isStopped_)
            return;
        task->surroundings_.keep(session, [task, kept] {
            if (task && !task->isStopped_) // its upload may run again already, in another task
                kept();
        });
    };
    settings.maxSendSpeed = maxSendSpeed_;
    run_ = std::make_unique<UploadRun>(surroundings_.service, surroundings_.timeSource, source, settings);
    connect(run_.get(), &UploadRun::progressed, this,
            [this, total = source.size()](qint64 sent) { Q_EMIT progressed(sent, total); });
    connect(run_.get(), &UploadRun::troubled, this, &UploadTask::troubled);
    run_->start(this, [this](const Result<UploadRun::Outcome>& outcome) { Q_EMIT finished(outcome); });
}

} // namespace quenby
