#include "app/uploads/UploadQueue.h"

#include "app/uploads/UploadTask.h"
#include "app/uploads/journal/UploadJournal.h"
#include "app/uploads/transfer/GeneratedIdentifiers.h"

#include <QRandomGenerator>

#include <algorithm>
#include <numeric>
#include <utility>

namespace quenby {

UploadQueue::UploadQueue(DriveServiceProvider driveService, DestinationFolders& folders,
                         std::shared_ptr<TimeSource> timeSource, UploadLimits limits)
    : driveService_(std::move(driveService))
    , folders_(folders)
    , timeSource_(std::move(timeSource))
    , limits_(limits)
    , lastPlace_(timeSource_->now().toMSecsSinceEpoch() * 1000) {}

UploadQueue::~UploadQueue() = default;

void UploadQueue::setAccount(const QString& account) {
    if (std::exchange(account_, account) == account)
        return;
    identifiers_.reset();
    interruptThoseThatMayNot();
    Q_EMIT accountChanged();
    startMore();
    tellWaitingCount();
}

// --- Uploads --------------------------------------------------------------------------------------------------------

void UploadQueue::add(const QList<UploadRequest>& requests) {
    if (!driveService_())
        return refuse(requests);
    QList<qint64> numbers;
    for (const UploadRequest& request : requests) {
        QueuedUpload upload;
        upload.request = request;
        upload.request.number = newNumber();
        upload.place = ++lastPlace_;
        upload.account = account_;
        upload.queuedAt = timeSource_->now();
        numbers.append(upload.request.number);
        insert(std::move(upload));
    }
    Q_EMIT added(numbers);
    writeNew(numbers);
    lookAtSources(numbers);
    tellWaitingCount();
}

// Of no other upload, also of those that are still being read.
qint64 UploadQueue::newNumber() const {
    qint64 number = 0;
    while (number <= 0 || entries_.contains(number))
        number = static_cast<qint64>(QRandomGenerator::global()->generate64() >> 1);
    return number;
}

void UploadQueue::refuse(const QList<UploadRequest>& requests) {
    for (UploadRequest request : requests) {
        request.number = newNumber();
        QMetaObject::invokeMethod(
            this,
            [this, request] {
                Q_EMIT finished(request, nobodySignedIn());
                Q_EMIT over(request);
            },
            Qt::QueuedConnection);
    }
}

void UploadQueue::insert(QueuedUpload upload) {
    const qint64 number = upload.request.number;
    lastPlace_ = std::max(lastPlace_, upload.place);
    order_.append(number);
    entries_.insert_or_assign(number, std::move(upload));
}

bool UploadQueue::erase(qint64 number) {
    resting_.remove(number);
    return entries_.erase(number) > 0 && order_.removeOne(number);
}

void UploadQueue::cancelAll() {
    QList<qint64> ours;
    for (const auto& [number, upload] : entries_) {
        if (isOurs(upload))
            ours.append(number);
    }
    cancel(ours);
}

void UploadQueue::cancel(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        interrupt(number, UploadState::waiting);
        if (erase(number))
            Q_EMIT removed(number);
    }
    if (journal_ && !isReleased_)
        journal_->remove(numbers);
    startMore();
    tellWaitingCount();
}

void UploadQueue::pause(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() || !(found->second.waits() || found->second.state == UploadState::running))
            continue;
        found->second.isFresh = false;
        if (found->second.state == UploadState::running)
            interrupt(number, UploadState::paused);
        else
            setState(found->second, UploadState::paused);
    }
    startMore();
    tellWaitingCount();
}

void UploadQueue::resume(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() ||
            (found->second.state != UploadState::paused && found->second.state != UploadState::resting))
            continue;
        setState(found->second, UploadState::waiting);
    }
    startMore();
    tellWaitingCount();
}

void UploadQueue::retry(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() ||
            (found->second.state != UploadState::failed && found->second.state != UploadState::changed))
            continue;
        QueuedUpload& upload = found->second;
        // What the Drive holds may be of the file as it was. The identifier stays: nothing has come into being by it.
        upload.session.location.clear();
        upload.session.held = 0;
        upload.source.reset();
        upload.isFresh = true;
        upload.sent = 0;
        upload.forgetFolder();
        setState(upload, UploadState::waiting);
    }
    startMore();
    tellWaitingCount();
}

void UploadQueue::setOrder(const QList<qint64>& numbers) {
    QList<qint64> first;
    QSet<qint64> named;
    QList<qint64> places; // that they have now
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() || named.contains(number))
            continue;
        named.insert(number);
        first.append(number);
        places.append(found->second.place);
    }
    std::sort(places.begin(), places.end());
    const auto stand = std::find_if(order_.begin(), order_.end(), [&](qint64 one) { return !named.contains(one); });
    // Where they stand first already, they only change places among themselves: then little has to be written.
    const bool areFirst = stand - order_.begin() == first.size();
    if (!areFirst && !order_.isEmpty())
        std::iota(places.begin(), places.end(), entries_.at(order_.first()).place - first.size());
    QList<JournalEntry> moved;
    for (qsizetype i = 0; i < first.size(); ++i) {
        QueuedUpload& upload = entries_.at(first.at(i));
        if (std::exchange(upload.place, places.at(i)) != places.at(i))
            moved.append(journalEntry(upload));
    }
    sortByPlace();
    if (journal_ && !moved.isEmpty() && !isReleased_)
        journal_->write(moved);
    Q_EMIT orderChanged();
    startMore();
}

void UploadQueue::sortByPlace() {
    std::stable_sort(order_.begin(), order_.end(),
                     [this](qint64 left, qint64 right) { return entries_.at(left).place < entries_.at(right).place; });
}

void UploadQueue::adoptOthers() {
    for (auto& [number, upload] : entries_) {
        if (isOurs(upload))
            continue;
        upload.account = account_;
        // A session, an identifier and a folder are of the other account's Drive.
        upload.session = {};
        upload.sent = 0;
        upload.forgetFolder();
        rewrite(upload);
    }
    Q_EMIT accountChanged();
    startMore();
    tellWaitingCount();
}

void UploadQueue::forgetOthers() {
    QList<qint64> others;
    for (const auto& [number, upload] : entries_) {
        if (!isOurs(upload))
            others.append(number);
    }
    cancel(others);
}

// --- All at once ----------------------------------------------------------------------------------------------------

void UploadQueue::setHeldBack(bool isHeldBack) {
    if (std::exchange(isHeldBack_, isHeldBack) == isHeldBack)
        return;
    interruptThoseThatMayNot();
    startMore();
    tellWaitingCount();
}

void UploadQueue::setMaxSendSpeed(qint64 bytesPerSecond) {
    maxSendSpeed_ = std::max<qint64>(bytesPerSecond, 0);
    shareSpeed();
}

void UploadQueue::tryNow() {
    resume(resting_.values());
    for (const auto& [number, task] : running_)
        task->tryNow();
    startMore();
}

// --- What there is --------------------------------------------------------------------------------------------------

const QueuedUpload* UploadQueue::find(qint64 number) const {
    const auto found = entries_.find(number);
    return found == entries_.end() ? nullptr : &found->second;
}

QList<UploadRequest> UploadQueue::remaining() const {
    QList<UploadRequest> requests;
    for (const qint64 number : order_) {
        const QueuedUpload& upload = entries_.at(number);
        if (isOurs(upload) && upload.isToBeDone())
            requests.append(upload.request);
    }
    return requests;
}

QStringList UploadQueue::otherAccounts() const {
    QStringList accounts;
    for (const auto& [number, upload] : entries_) {
        if (!isOurs(upload) && !accounts.contains(upload.account))
            accounts.append(upload.account);
    }
    return accounts;
}

qsizetype UploadQueue::otherCount() const {
    return std::count_if(entries_.begin(), entries_.end(), [this](const auto& entry) { return !isOurs(entry.second); });
}

size_t UploadQueue::waitingCount() const {
    return static_cast<size_t>(std::count_if(entries_.begin(), entries_.end(), [this](const auto& entry) {
        return isOurs(entry.second) && entry.second.waits();
    }));
}

bool UploadQueue::getsOn() const {
    return std::any_of(running_.begin(), running_.end(),
                       [this](const auto& task) { return entries_.at(task.first).reason.isEmpty(); });
}

QSet<QByteArray> UploadQueue::paths() const {
    QSet<QByteArray> paths;
    for (const auto& [number, upload] : entries_)
        paths.insert(upload.request.path);
    return paths;
}

// The upload may be gone afterwards: whoever hears of it may cancel it.
void UploadQueue::setState(QueuedUpload& upload, UploadState state, const QString& reason) {
    upload.reason = reason;
    upload.state = state;
    if (state == UploadState::resting)
        resting_.insert(upload.request.number);
    else
        resting_.remove(upload.request.number);
    if (state != UploadState::running) // which is written down as waiting, as it was
        rewrite(upload);
    Q_EMIT changed(upload.request.number);
}

// Many ends in a row are counted once.
void UploadQueue::tellWaitingCount() {
    if (std::exchange(isCountToBeTold_, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isCountToBeTold_ = false;
            Q_EMIT waitingCountChanged();
        },
        Qt::QueuedConnection);
}

} // namespace quenby
