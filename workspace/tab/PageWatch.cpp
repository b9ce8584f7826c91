#include "workspace/tab/PageWatch.h"

#include "workspace/tab/PageScripts.h"

namespace quenby {

PageWatch::PageWatch(std::shared_ptr<TimeSource> timeSource)
    : timeSource_(std::move(timeSource)) {}

void PageWatch::ask(BrowserView& page) {
    if (std::exchange(isWaiting_, true))
        return;
    waitOn();
    page.evaluate(signOfLifeScript(), this, [this, question = ++question_](const QVariant&) {
        if (!isWaiting_ || question != question_)
            return;
        forget();
        Q_EMIT answered();
    });
}

void PageWatch::waitOn() {
    if (isWaiting_)
        patience_ = timeSource_->startTimer(std::chrono::seconds(10), [this] { Q_EMIT notAnswering(); });
}

void PageWatch::forget() {
    isWaiting_ = false;
    patience_.reset();
}

} // namespace quenby
