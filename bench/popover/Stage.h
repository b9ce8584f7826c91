// The popover with all that the program gives it - status item, feed, pictures, settings - put together as the program
// does it, on the desktop that it runs on.
//
// Threads: the main thread.
#pragma once

#include "app/account/DriveConnection.h"
#include "app/agent/ChangesPopover.h"
#include "app/changes/ChangeFeed.h"
#include "app/pictures/FetchedPictures.h"
#include "app/statusitem/StatusItem.h"
#include "app/statusitem/StatusItemInputs.h"
#include "app/statusitem/StatusMenus.h"
#include "bench/popover/FeedClock.h"
#include "bench/popover/MemoryNetwork.h"
#include "bench/popover/PaintWatch.h"
#include "bench/popover/Screen.h"
#include "platform/PlatformServices.h"

#include <memory>

namespace quenby {
class ScrollView;
}

namespace quenby::bench {

class Stage {
public:
    // The window manager's, with a window that was shown or hidden.
    static constexpr std::chrono::milliseconds settlingTime{500};

    // The feed asks this Drive service, or one of its own that has no Drive behind it. Its requests get the answers
    // that lie ready in memory first.
    explicit Stage(PaintWatch& application, std::shared_ptr<GTLServiceDrive> driveService = nullptr);
    ~Stage();

    // The thumbnails of the files up to this rank, as many as there are records, are in the cache folder from now on.
    void cacheThumbnails(int highestRank);
    // The list has its sixteen records after this, of the ranks from 0.
    void fillFeed();
    // Waits until the tray shows the item, with nothing else left to do.
    void showStatusItem();

    // Waits until the popover is open at this height (logical pixels).
    void open(int height);
    // Leaves it the time to go from the screen.
    void close();
    // Waits until the feed is done with the answer.
    void poll();

    MemoryNetwork& network() { return network_; }
    ChangeFeed& feed() { return feed_; }
    ChangesPopover& popover() { return popover_; }
    // When the latest click on the status item became a call.
    std::chrono::steady_clock::time_point callTime() const { return callTime_; }
    Screen& screen() { return screen_; }
    // Once the popover was opened.
    ScrollView& list() const;

private:
    class Inputs final : public StatusItemInputs {
    public:
        explicit Inputs(const ChangesPopover& popover)
            : popover_(popover) {}
        bool isSignedIn() const override { return true; }
        AccountSummary accountSummary() const override;
        bool isUploadInProgress() const override { return false; }
        int uploadStatusPer() const override { return -1; }
        bool isPopoverVisible() const override { return popover_.isVisible(); }

    private:
        const ChangesPopover& popover_;
    };

    PaintWatch& application_;
    std::chrono::steady_clock::time_point callTime_;
    MemoryNetwork network_;
    const std::shared_ptr<TimeSource> timeSource_ = makeSystemTimeSource();
    const std::shared_ptr<FeedClock> feedClock_ = std::make_shared<FeedClock>();
    PlatformServices platform_;
    DriveConnection drive_;
    const std::shared_ptr<GTLServiceDrive> driveService_;
    Screen screen_;
    ChangeFeed feed_;
    FetchedPictures pictures_;
    Inputs inputs_;
    StatusMenus menus_;
    ChangesPopover popover_;
    StatusItem statusItem_;
};

} // namespace quenby::bench
