// Whose turn it is in the queue, and what becomes of an upload that has had its turn.
#include "app/uploads/UploadQueue.h"

#include "app/uploads/UploadTask.h"
#include "app/uploads/transfer/GeneratedIdentifiers.h"
#include "app/uploads/transfer/UploadTrouble.h"
#include "driveapi/GTLServiceDrive.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// Before an upload that got nowhere has another turn. tryNow() comes earlier.
constexpr auto restAfterTrouble = 5min;

// What is in the Drive under the upload's identifier, if anything, is another state of the file.
bool isIdentifierSpent(const Error& error) {
    return error.domain() == uploadErrorDomain && (error.code() == static_cast<qint64>(UploadErrorCode::fileChanged) ||
                                                   error.code() == static_cast<qint64>(UploadErrorCode::copyDiffers));
}

} // namespace

bool UploadQueue::mayRun(const QueuedUpload& upload) const {
    return !isReleased_ && !isHeldBack_ && upload.isWrittenDown && isOurs(upload);
}

void UploadQueue::startMore() {
    if (isReleased_ || isHeldBack_ || isReading_ || !driveService_())
        return;
    const auto now = timeSource_->elapsed();
    QList<qint64> next; // starting one may change the order
    for (const qint64 number : std::as_const(order_)) {
        if (running_.size() + ending_ + static_cast<size_t>(next.size()) >= limits_.uploadsAtOnce)
            break;
        const QueuedUpload& upload = entries_.at(number);
        const bool hasRested = upload.state == UploadState::resting && upload.restsUntil <= now;
        if ((upload.state == UploadState::waiting || hasRested) && mayRun(upload))
            next.append(number);
    }
    for (const qint64 number : std::as_const(next)) {
        const auto upload = entries_.find(number); // whoever hears that one has its turn may do anything
        const auto service = driveService_();
        if (service && upload != entries_.end() && upload->second.waits() && mayRun(upload->second))
            start(upload->second, service);
    }
    shareSpeed();
    wakeLater();
}

void UploadQueue::start(QueuedUpload& upload, const std::shared_ptr<GTLServiceDrive>& service) {
    // A link on the clipboard, long after the capture and perhaps in another session, would surprise.
    upload.request.isCapture = upload.request.isCapture && upload.isFresh;
    const qint64 number = upload.request.number;
    if (!identifiers_ || identifiersService_.lock() != service) {
        identifiers_ = std::make_shared<GeneratedIdentifiers>(service);
        identifiersService_ = service;
    }
    auto task = std::make_unique<UploadTask>(
        UploadTask::Surroundings{
            .service = service,
            .folders = folders_,
            .timeSource = timeSource_,
            .patience = limits_.patience,
            .identifiers = identifiers_,
            .keep = [this, number](const UploadSession& session,
                                   const std::function<void()>& kept) { keep(number, session, kept); }},
        upload);
    connectTask(*task, upload.request);
    UploadTask* const begun = running_.emplace(number, std::move(task)).first->second.get();
    setState(upload, UploadState::running);
    begun->start();
    tellWaitingCount();
}

void UploadQueue::connectTask(UploadTask& task, const UploadRequest& request) {
    const qint64 number = request.number;
    connect(&task, &UploadTask::folderFound, this, [this, request](const QString& identifier) {
        // Whoever waits for the same folder need not look for it again.
        for (auto& [other, waiting] : entries_) {
            if (waiting.state == UploadState::waiting && waiting.request.folderName == request.folderName &&
                waiting.account == account_)
                waiting.request.parentId = identifier;
        }
    });
    connect(&task, &UploadTask::started, this, [this, request] { Q_EMIT started(request); });
    connect(&task, &UploadTask::opened, this, [this, number](const SourceFacts& source) {
        QueuedUpload& opened = entries_.at(number);
        opened.source = source;
        opened.total = source.size;
    });
    connect(&task, &UploadTask::progressed, this, [this, request](qint64 sent, qint64 total) {
        QueuedUpload& sending = entries_.at(request.number);
        sending.sent = sent;
        sending.total = total;
        sending.reason.clear();
        Q_EMIT progressed(request, sent, total);
        Q_EMIT changed(request.number);
    });
    connect(&task, &UploadTask::troubled, this, [this, request](const Error& error) {
        entries_.at(request.number).reason = error.description();
        Q_EMIT troubled(request, error);
        Q_EMIT changed(request.number);
    });
    connect(&task, &UploadTask::finished, this,
            [this, number](const Result<UploadRun::Outcome>& outcome) { taskFinished(number, outcome); });
    connect(&task, &UploadTask::leftOut, this, [this, number](const Error& error) { taskLeftOut(number, error); });
    connect(&task, &UploadTask::foundChange, this, [this, number] { taskFoundChange(number); });
}

// Each that runs gets the same share; one that needs less leaves the rest unused until it is over.
void UploadQueue::shareSpeed() {
    const qint64 count = std::max<qint64>(static_cast<qint64>(running_.size()), 1);
    const qint64 share = maxSendSpeed_ > 0 ? std::max<qint64>(maxSendSpeed_ / count, 1) : 0;
    for (const auto& [number, task] : running_)
        task->setMaxSendSpeed(share);
}

// A task ends from inside one of its own signals: it is kept until the event loop's next turn, and has its place until
// its file is closed.
void UploadQueue::end(qint64 number) {
    auto task = running_.extract(number);
    if (task.empty())
        return;
    task.mapped()->disconnect(this);
    task.mapped()->setParent(this); // it does not outlive us
    ++ending_;
    connect(task.mapped().get(), &QObject::destroyed, this, [this] {
        --ending_;
        startMore();
    });
    task.mapped().release()->stop();
}

void UploadQueue::taskFinished(qint64 number, const Result<UploadRun::Outcome>& outcome) {
    end(number);
    QueuedUpload& upload = entries_.at(number);
    if (!outcome && comesBack(upload, outcome.error()))
        return;
    const UploadRequest request = upload.request;
    const bool isToStay = !outcome && !request.removeSource; // to be tried again by the user
    if (isToStay) {
        if (isIdentifierSpent(outcome.error()))
            upload.session = {}; // trying again would find that one
        setState(upload, UploadState::failed, outcome.error().description());
    } else {
        erase(number);
    }
    Q_EMIT finished(request, outcome);
    if (!isToStay) {
        Q_EMIT removed(number);
        forget(request);
    }
    tellWaitingCount();
}

// Trouble that may pass has outlasted the patience: others get its place.
bool UploadQueue::comesBack(QueuedUpload& upload, const Error& error) {
    if (!limits_.comesBack || troubleOf(error, false) != UploadTrouble::passing)
        return false;
    upload.isFresh = false;
    upload.restsUntil = timeSource_->elapsed() + restAfterTrouble;
    const UploadRequest request = upload.request;
    setState(upload, UploadState::resting, error.description());
    Q_EMIT troubled(request, error);
    return true;
}

void UploadQueue::taskLeftOut(qint64 number, const Error& error) {
    end(number);
    QueuedUpload& upload = entries_.at(number);
    if (comesBack(upload, error))
        return;
    const UploadRequest request = upload.request;
    const bool isGone = error.is(errorDomain::posix, ENOENT);
    if (journal_ && !isGone) { // silently, but not lost
        setState(upload, UploadState::failed, error.description());
        Q_EMIT leftOut(request, error);
    } else {
        erase(number);
        Q_EMIT leftOut(request, error);
        Q_EMIT removed(number);
        forget(request);
    }
    tellWaitingCount();
}

void UploadQueue::taskFoundChange(qint64 number) {
    end(number);
    QueuedUpload& upload = entries_.at(number);
    const UploadRequest request = upload.request;
    setState(upload, UploadState::changed);
    Q_EMIT sourceChanged(request);
    tellWaitingCount();
}

// What it has come to by now stays of use.
void UploadQueue::interrupt(qint64 number, UploadState becomes) {
    if (!running_.contains(number))
        return;
    end(number);
    QueuedUpload& upload = entries_.at(number);
    upload.isFresh = false;
    upload.session.held = upload.sent;
    setState(upload, becomes);
}

void UploadQueue::interruptThoseThatMayNot() {
    QList<qint64> numbers;
    for (const auto& [number, task] : running_) {
        if (!mayRun(entries_.at(number)))
            numbers.append(number);
    }
    for (const qint64 number : std::as_const(numbers))
        interrupt(number, UploadState::waiting);
}

// When the first of those that rest is due.
void UploadQueue::wakeLater() {
    wakeUp_.reset();
    if (running_.size() + ending_ >= limits_.uploadsAtOnce) // the end of one of them comes first
        return;
    std::optional<std::chrono::milliseconds> earliest;
    for (const qint64 number : std::as_const(resting_)) {
        if (const QueuedUpload& upload = entries_.at(number); mayRun(upload))
            earliest = std::min(earliest.value_or(upload.restsUntil), upload.restsUntil);
    }
    if (!earliest)
        return;
    const auto delay = std::max(*earliest - timeSource_->elapsed(), std::chrono::milliseconds(1));
    wakeUp_ = timeSource_->startTimer(delay, [this] { startMore(); });
}

} // namespace quenby
