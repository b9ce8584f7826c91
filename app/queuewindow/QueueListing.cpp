#include "app/queuewindow/QueueListing.h"

#include "app/cli/Folders.h"

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr size_t mostDone = 500;
// A large upload tells of every piece; nobody reads faster than this.
constexpr auto stepOfProgress = 400ms;

QueueRow::State stateOf(UploadState state) {
    switch (state) {
    case UploadState::waiting:
        return QueueRow::State::waiting;
    case UploadState::running:
        return QueueRow::State::running;
    case UploadState::resting:
        return QueueRow::State::resting;
    case UploadState::paused:
        return QueueRow::State::paused;
    case UploadState::changed:
        return QueueRow::State::changed;
    case UploadState::failed:
        break;
    }
    return QueueRow::State::failed;
}

} // namespace

QueueListing::QueueListing(const UploadQueue& queue, QueueRows& rows, std::shared_ptr<TimeSource> timeSource)
    : queue_(queue)
    , rows_(rows)
    , timeSource_(std::move(timeSource)) {
    connect(&queue, &UploadQueue::added, this, &QueueListing::added);
    connect(&queue, &UploadQueue::changed, this, &QueueListing::changed);
    connect(&queue, &UploadQueue::finished, this, &QueueListing::finished);
    connect(&queue, &UploadQueue::removed, this, &QueueListing::removed);
    connect(&queue, &UploadQueue::orderChanged, this, [this] { rows_.setOrder(queue_.numbers()); });
    connect(&queue, &UploadQueue::accountChanged, this, &QueueListing::rebuild);
}

void QueueListing::clearDone() {
    for (const qint64 number : std::exchange(done_, {}))
        rows_.remove(number);
}

void QueueListing::rebuild() {
    rows_.clear();
    shown_.clear();
    done_.clear();
    added(queue_.numbers());
}

void QueueListing::added(const QList<qint64>& numbers) {
    QList<QueueRow> rows;
    for (const qint64 number : numbers) {
        const QueuedUpload* upload = queue_.find(number);
        if (upload && queue_.isOurs(*upload))
            rows.append(rowOf(*upload));
    }
    if (!rows.isEmpty())
        rows_.append(rows);
}

void QueueListing::changed(qint64 number) {
    const QueuedUpload* upload = queue_.find(number);
    if (!upload)
        return;
    if (upload->state != UploadState::running) {
        shown_.erase(number);
        return rows_.change(rowOf(*upload));
    }
    const auto now = timeSource_->elapsed();
    const auto [shown, isNew] = shown_.try_emplace(number);
    shown->second.rate.note(now, upload->sent);
    const bool isEnd = upload->sent == upload->total;
    if (!isNew && !isEnd && upload->reason.isEmpty() && now - shown->second.at < stepOfProgress)
        return;
    shown->second.at = now;
    rows_.change(rowOf(*upload));
}

void QueueListing::finished(const UploadRequest& request, const Result<UploadRun::Outcome>& outcome) {
    shown_.erase(request.number);
    const auto& rows = rows_.rows();
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const QueueRow& shown) { return shown.number == request.number; });
    const QueuedUpload* const stays = queue_.find(request.number); // to be tried again
    if (row == rows.end() || stays)
        return;
    QueueRow ended = *row;
    ended.state = outcome ? QueueRow::State::done : QueueRow::State::failed;
    ended.message = outcome ? QString() : outcome.error().description();
    ended.sent = outcome ? outcome->bytes : ended.sent;
    ended.total = outcome ? outcome->bytes : ended.total;
    ended.bytesPerSecond = 0;
    ended.timeLeft.reset();
    rows_.change(ended);
    done_.push_back(request.number);
    while (done_.size() > mostDone) {
        rows_.remove(done_.front());
        done_.pop_front();
    }
}

void QueueListing::removed(qint64 number) {
    shown_.erase(number);
    if (std::find(done_.rbegin(), done_.rend(), number) == done_.rend())
        rows_.remove(number);
}

QueueRow QueueListing::rowOf(const QueuedUpload& upload) const {
    const UploadRequest& request = upload.request;
    QueueRow row;
    row.number = request.number;
    row.name = nameForPeople(request.path);
    row.place = textForPeople(QString::fromUtf8(folderOf(request.path)));
    row.folder = textForPeople(request.folderName);
    // What stands in the way of one that runs passes by itself.
    const bool isInTrouble = upload.state == UploadState::running && !upload.reason.isEmpty();
    row.state = isInTrouble ? QueueRow::State::resting : stateOf(upload.state);
    row.sent = upload.sent;
    row.total = upload.total;
    row.message = upload.reason;
    if (const auto shown = shown_.find(request.number); shown != shown_.end() && !isInTrouble) {
        row.bytesPerSecond = shown->second.rate.bytesPerSecond();
        if (row.bytesPerSecond > 0 && upload.total >= upload.sent)
            row.timeLeft = std::chrono::seconds((upload.total - upload.sent) / row.bytesPerSecond);
    }
    return row;
}

} // namespace quenby
