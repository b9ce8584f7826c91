// The answer to one poll, taken apart page by page while the next page is on its way: what is held are plain values,
// and after the last byte there is next to nothing left to do.
//
// Threads: one thread adds and completes; the reading is done on the queue. Destroying it before the end drops what was
// read; nothing is delivered then.
#pragma once

#include "app/changes/ChangeStore.h"
#include "core/CompletionGate.h"

#include <functional>
#include <memory>

class QThreadPool;

namespace quenby {

class GTLDriveChangeList;

class FeedPages {
public:
    // The queue outlives this. Without one, everything is done here and now.
    explicit FeedPages(QThreadPool* queue);

    // In the order of the server. The page is handed over: nobody else may touch it from now on.
    void add(std::shared_ptr<GTLDriveChangeList> page);
    bool isEmpty() const { return count_ == 0; }
    // Once, after the last page: runs pollCompleted() with all of them.
    void complete(ChangeStore store, const FeedSurroundings& surroundings, const CompletionGate<PolledStore>& gate);

private:
    struct Reading;

    void start(std::function<void()> step, bool isShort);

    QThreadPool* const queue_;
    const std::shared_ptr<Reading> reading_;
    size_t count_ = 0;
    bool isAllShort_ = true; // so few changes that nothing went to the queue
};

} // namespace quenby
