// One upload in the queue: what is wanted, and how far it has come. A plain value.
#pragma once

#include "app/uploads/UploadRequest.h"
#include "app/uploads/journal/JournalEntry.h"

#include <chrono>
#include <optional>

namespace quenby {

enum class UploadState {
    waiting, // for its turn
    running,
    resting, // in trouble that may pass: its next turn comes later
    paused,  // by the user
    changed, // its file is another one than the one that was meant; the user decides
    failed,
};

struct QueuedUpload {
    UploadRequest request; // its number tells it from the others
    QString account;       // whose Drive it is for
    UploadState state = UploadState::waiting;
    QString reason; // of what rests or failed, for people
    QDateTime queuedAt;
    qint64 place = 0;                  // the order, smallest first
    std::optional<SourceFacts> source; // the file that was meant; absent until it was looked at
    UploadSession session;

    // Of this run of the program:
    bool isWrittenDown = false; // nothing is sent before
    bool isFresh = true; // it was never interrupted: a file that is still being written is the one that was meant
    qint64 sent = 0;     // bytes
    qint64 total = -1;   // bytes; -1: not known yet
    std::chrono::milliseconds restsUntil{0}; // of TimeSource::elapsed()

    // Whether it is still to be done without anybody's doing.
    bool isToBeDone() const { return state != UploadState::failed; }
    // Looked for again, then: it may be gone, or another Drive's.
    void forgetFolder() { request.parentId.clear(); }
    bool waits() const { return state == UploadState::waiting || state == UploadState::resting; }
};

JournalEntry journalEntry(const QueuedUpload& upload);
// Nothing when its request can't be read. Where it was interrupted it waits for its turn.
std::optional<QueuedUpload> queuedUpload(const JournalEntry& entry);

} // namespace quenby
