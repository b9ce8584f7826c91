#include "app/agent/UploadListing.h"

#include "core/ByteCountText.h"
#include "workspace/window/UploadRows.h"

namespace quenby {
namespace {

constexpr int notKnown = -1;

int percentOf(qint64 sent, qint64 total) { return total > 0 ? static_cast<int>(sent * 100 / total) : 100; }

} // namespace

UploadListing::UploadListing(const UploadQueue& queue, UploadRows& rows)
    : queue_(queue)
    , rows_(rows) {
    connect(&queue, &UploadQueue::started, this, &UploadListing::started);
    connect(&queue, &UploadQueue::progressed, this, &UploadListing::progressed);
    connect(&queue, &UploadQueue::troubled, this, &UploadListing::troubled);
    connect(&queue, &UploadQueue::finished, this, [this](const UploadRequest& request) { remove(request.number); });
    connect(&queue, &UploadQueue::removed, this, &UploadListing::remove);
    // Interrupted: it waits, or the user has to decide something.
    connect(&queue, &UploadQueue::changed, this, [this](qint64 number) {
        const QueuedUpload* upload = queue_.find(number);
        if (upload && upload->state != UploadState::running)
            remove(number);
    });
    connect(&queue, &UploadQueue::waitingCountChanged, this,
            [this] { rows_.setWaiting(static_cast<int>(queue_.waitingCount())); });
}

void UploadListing::remove(qint64 number) {
    if (shownPercent_.erase(number) > 0)
        rows_.remove(number);
}

void UploadListing::started(const UploadRequest& request) {
    shownPercent_[request.number] = notKnown;
    rows_.append({request.number, nameForPeople(request.path), {}, notKnown});
}

// A large upload tells of every piece; what a person can see of it is one step in a hundred.
void UploadListing::progressed(const UploadRequest& request, qint64 sent, qint64 total) {
    const int percent = percentOf(sent, total);
    if (std::exchange(shownPercent_[request.number], percent) == percent)
        return;
    rows_.change({request.number, nameForPeople(request.path),
                  byteCountText(sent) + QStringLiteral(" of ") + byteCountText(total), percent});
}

void UploadListing::troubled(const UploadRequest& request, const Error& error) {
    shownPercent_[request.number] = notKnown; // the next step is shown, whichever it is
    rows_.change({request.number, nameForPeople(request.path), tr("Waits to go on: ") + error.description(), notKnown});
}

} // namespace quenby
