#include "app/uploads/UploadQueue.h"

#include "app/uploads/UploadTask.h"
#include "driveapi/GTLServiceDrive.h"

namespace quenby {

UploadQueue::UploadQueue(DriveServiceProvider driveService, std::shared_ptr<TimeSource> timeSource, UploadLimits limits)
    : driveService_(std::move(driveService))
    , timeSource_(std::move(timeSource))
    , limits_(limits) {}

UploadQueue::~UploadQueue() = default;

void UploadQueue::add(const UploadRequest& request) {
    waiting_.push_back(request);
    waiting_.back().number = ++lastNumber_;
    startMore();
    Q_EMIT waitingCountChanged();
}

void UploadQueue::cancelAll() {
    waiting_.clear();
    running_.clear();
    Q_EMIT cancelled();
    Q_EMIT waitingCountChanged();
}

void UploadQueue::tryNow() {
    for (const auto& [number, task] : running_)
        task->tryNow();
}

QList<UploadRequest> UploadQueue::remaining() const {
    QList<UploadRequest> requests;
    for (const auto& [number, task] : running_)
        requests.append(task->request());
    for (const UploadRequest& request : waiting_)
        requests.append(request);
    return requests;
}

void UploadQueue::startMore() {
    while (running_.size() < limits_.uploadsAtOnce && !waiting_.empty()) {
        const UploadRequest request = std::move(waiting_.front());
        waiting_.pop_front();
        start(request);
    }
}

void UploadQueue::start(const UploadRequest& request) {
    const qint64 number = request.number;
    auto task = std::make_unique<UploadTask>(driveService_(), timeSource_, request, limits_.patience);
    connect(task.get(), &UploadTask::progressed, this,
            [this, request](qint64 sent, qint64 total) { Q_EMIT progressed(request, sent, total); });
    connect(task.get(), &UploadTask::troubled, this,
            [this, request](const Error& error) { Q_EMIT troubled(request, error); });
    task->start(this, [this, number](const Result<UploadRun::Outcome>& outcome) { taskFinished(number, outcome); });
    running_.emplace(number, std::move(task));
    Q_EMIT started(request);
}

void UploadQueue::taskFinished(qint64 number, const Result<UploadRun::Outcome>& outcome) {
    const auto task = running_.extract(number);
    if (task.empty()) // cancelled on the way
        return;
    Q_EMIT finished(task.mapped()->request(), outcome);
    startMore();
    Q_EMIT waitingCountChanged();
}

} // namespace quenby
