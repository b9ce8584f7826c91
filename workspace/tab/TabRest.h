// When a tab that nobody looks at stops running, and when its page is given up.
//
// What was typed into a page and not sent is lost when it is given up. An engine can't tell whether there is such a
// thing; the web application's editors keep what is typed by themselves, which is why four minutes are enough.
#pragma once

#include "core/TimeSource.h"
#include "platform/BrowserView.h"

#include <functional>
#include <memory>

namespace quenby {

// Threads: the main thread. At most one timer runs, and none while the tab is looked at or done with.
class TabRest {
public:
    using Rest = std::function<void(WebLifecycle lifecycle)>;

    // `rest` is told what the page is to be from now on.
    TabRest(std::shared_ptr<TimeSource> timeSource, Rest rest);

    // Looked at again, or no longer. It is looked at, at first.
    void setShown(bool isShown);
    // It loads, or a download runs that it began: its time starts when it is idle.
    void setBusy(bool isBusy);

private:
    void restart();

    const std::shared_ptr<TimeSource> timeSource_;
    const Rest rest_;
    std::unique_ptr<Timer> timer_;
    WebLifecycle lifecycle_ = WebLifecycle::active;
    bool isShown_ = true;
    bool isBusy_ = false;
};

} // namespace quenby
