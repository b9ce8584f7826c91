#include "app/uploads/queue/QueuedUpload.h"

namespace quenby {
namespace {

JournalEntry::State writtenState(UploadState state) {
    switch (state) {
    case UploadState::paused:
        return JournalEntry::State::paused;
    case UploadState::failed:
        return JournalEntry::State::failed;
    case UploadState::changed:
        return JournalEntry::State::changed;
    case UploadState::waiting:
    case UploadState::running:
    case UploadState::resting:
        break;
    }
    return JournalEntry::State::waiting;
}

UploadState readState(JournalEntry::State state) {
    switch (state) {
    case JournalEntry::State::paused:
        return UploadState::paused;
    case JournalEntry::State::failed:
        return UploadState::failed;
    case JournalEntry::State::changed:
        return UploadState::changed;
    case JournalEntry::State::waiting:
        break;
    }
    return UploadState::waiting;
}

} // namespace

JournalEntry journalEntry(const QueuedUpload& upload) {
    return {.number = upload.request.number,
            .place = upload.place,
            .account = upload.account,
            .request = lineFromRequest(upload.request),
            .source = upload.source,
            .queuedAt = upload.queuedAt,
            .state = writtenState(upload.state),
            .reason = upload.state == UploadState::failed ? upload.reason : QString(),
            .session = upload.session};
}

std::optional<QueuedUpload> queuedUpload(const JournalEntry& entry) {
    auto request = requestFromLine(entry.request);
    if (!request)
        return std::nullopt;
    request->number = entry.number;
    QueuedUpload upload;
    upload.request = std::move(*request);
    upload.account = entry.account;
    upload.state = readState(entry.state);
    upload.reason = entry.reason;
    upload.queuedAt = entry.queuedAt;
    upload.place = entry.place;
    upload.source = entry.source;
    upload.session = entry.session;
    upload.isWrittenDown = true;
    upload.isFresh = false;
    upload.sent = entry.session.held;
    upload.total = entry.source ? entry.source->size : -1;
    return upload;
}

} // namespace quenby
