// The completion of one poll off the calling thread: an answer may be a whole account's feed.
#pragma once

#include "app/changes/ChangeStore.h"
#include "core/CompletionGate.h"

#include <memory>

class QThreadPool;

namespace quenby {

class GTLDriveChangeList;

// What a poll was begun with, and its answer. The list is handed over: nobody else may touch it from now on.
struct AnsweredPoll {
    std::shared_ptr<GTLDriveChangeList> list;
    ChangeStore store;
    FeedSurroundings surroundings;
};

// Runs pollCompleted() on the queue; without one, and for an answer with next to nothing in it, here and now.
void completePoll(QThreadPool* queue, AnsweredPoll poll, CompletionGate<PolledStore> gate);

} // namespace quenby
