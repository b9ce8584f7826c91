// Notices that a page does not answer any more. It is asked when somebody does something with it, not all the time.
#pragma once

#include "core/TimeSource.h"
#include "platform/BrowserView.h"

#include <QObject>

#include <memory>

namespace quenby {

// Threads: the main thread.
class PageWatch final : public QObject {
    Q_OBJECT

public:
    explicit PageWatch(std::shared_ptr<TimeSource> timeSource);

    // Asks, unless an answer is being waited for. A page that is at rest does not answer: it must not be.
    void ask(BrowserView& page);
    // Waits once more for the answer that has not come.
    void waitOn();
    // The page is another one, or gone: what was asked is not waited for.
    void forget();

Q_SIGNALS:
    // For ten seconds.
    void notAnswering();
    // After all.
    void answered();

private:
    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<Timer> patience_;
    int question_ = 0; // counts them
    bool isWaiting_ = false;
};

} // namespace quenby
