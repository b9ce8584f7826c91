#include "app/changes/FeedPages.h"

#include "app/changes/FeedAnswerReader.h"
#include "driveapi/GTLDriveChange.h"

#include <QRunnable>
#include <QThreadPool>

#include <functional>
#include <mutex>
#include <vector>

namespace quenby {
namespace {

// So few changes are read in less time than another thread needs to wake up, and most polls bring none.
constexpr qsizetype fewChanges = 4;

FeedAnswer joined(std::vector<FeedAnswer> pages) {
    FeedAnswer whole;
    qsizetype count = 0;
    for (const FeedAnswer& page : pages)
        count += page.items.size();
    whole.items.reserve(count);
    for (FeedAnswer& page : pages) {
        whole.items += std::move(page.items);
        whole.largestChangeId = page.largestChangeId; // the last one knows
        whole.nextPageToken = page.nextPageToken;
        whole.isCutOff = page.isCutOff;
    }
    return whole;
}

} // namespace

// Shared by the steps, which may run on several threads and end in any order.
struct FeedPages::Reading {
    std::mutex mutex;
    std::vector<FeedAnswer> pages;
    size_t unfinishedSteps = 0;
    std::function<void(FeedAnswer)> whenRead;

    void finishStep() {
        std::function<void(FeedAnswer)> last;
        {
            const std::scoped_lock lock(mutex);
            if (--unfinishedSteps > 0 || !whenRead)
                return;
            last = std::exchange(whenRead, nullptr);
        }
        last(joined(std::move(pages)));
    }
};

FeedPages::FeedPages(QThreadPool* queue)
    : queue_(queue)
    , reading_(std::make_shared<Reading>()) {}

void FeedPages::add(std::shared_ptr<GTLDriveChangeList> page) {
    const auto items = page->items();
    const bool isShort = !items || items->count() <= fewChanges;
    {
        const std::scoped_lock lock(reading_->mutex);
        reading_->pages.emplace_back();
    }
    start(
        [reading = reading_.get(), place = count_++, list = std::move(page)] {
            FeedAnswer answer = feedAnswer(*list);
            const std::scoped_lock lock(reading->mutex);
            reading->pages[place] = std::move(answer);
        },
        isShort);
}

void FeedPages::complete(ChangeStore store, const FeedSurroundings& surroundings,
                         const CompletionGate<PolledStore>& gate) {
    {
        const std::scoped_lock lock(reading_->mutex);
        reading_->whenRead = [store = std::move(store), surroundings, gate](FeedAnswer answer) mutable {
            if (gate.ticket().isPending())
                gate.deliver(pollCompleted(std::move(store), std::move(answer), surroundings));
        };
    }
    start([] {}, isAllShort_);
}

void FeedPages::start(std::function<void()> step, bool isShort) {
    {
        const std::scoped_lock lock(reading_->mutex);
        ++reading_->unfinishedSteps;
    }
    isAllShort_ = isAllShort_ && isShort;
    auto whole = [reading = reading_, step = std::move(step)]() mutable {
        step();
        step = nullptr; // the page goes here, and not where the last owner happens to be
        reading->finishStep();
    };
    if (queue_ && !isShort)
        queue_->start(std::move(whole));
    else
        whole();
}

} // namespace quenby
