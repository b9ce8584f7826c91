#include "app/changes/PollCompletion.h"

#include "app/changes/FeedAnswerReader.h"
#include "driveapi/GTLDriveChange.h"

#include <QRunnable>
#include <QThreadPool>

#include <atomic>

namespace quenby {
namespace {

class PollCompletion final : public QRunnable {
public:
    PollCompletion(AnsweredPoll poll, CompletionGate<PolledStore> gate)
        : poll_(std::move(poll))
        , gate_(std::move(gate)) {
        isPublished_.store(true, std::memory_order_release);
    }
    void run() override {
        (void)isPublished_.load(std::memory_order_acquire);
        if (gate_.ticket().isPending())
            gate_.deliver(pollCompleted(std::move(poll_.store), feedAnswer(*poll_.list), poll_.surroundings));
    }

private:
    AnsweredPoll poll_;
    CompletionGate<PolledStore> gate_;
    std::atomic<bool> isPublished_ = false; // orders the constructor before run() on the queue's thread
};

// So few changes are read in less time than another thread needs to wake up, and most polls bring none.
constexpr qsizetype fewChanges = 4;

} // namespace

void completePoll(QThreadPool* queue, AnsweredPoll poll, CompletionGate<PolledStore> gate) {
    if (const auto items = poll.list->items(); !items || items->count() <= fewChanges)
        queue = nullptr;
    auto completion = std::make_unique<PollCompletion>(std::move(poll), std::move(gate));
    if (queue)
        queue->start(completion.release()); // the queue deletes it
    else
        completion->run();
}

} // namespace quenby
