// Keeps many notices from burying the desktop: each stands alone, but for a burst: what exceeds a few within a few
// seconds shares one notification, which is replaced as the number grows.
//
// Threads: the main thread.
#pragma once

#include "core/TimeSource.h"

#include <QString>

#include <deque>

namespace quenby {

class NoticeBurst {
public:
    // Posts a notification with the notice. The tag is empty for one that stands alone, else the one under which it
    // takes the place of those that shared it before; "more" is to be appended to its text ("\nand 2 more", or empty).
    using Post = std::function<void(const QString& tag, const QString& more)>;

    // The name begins the tags; so many notices may stand alone before they are a burst.
    NoticeBurst(QString name, size_t mostAlone, std::shared_ptr<TimeSource> timeSource);

    // Posts it now, or as the latest of a burst now or soon. Of a burst, only the latest is kept.
    void tell(Post post);
    // Forgets what waits.
    void clear();

private:
    bool isBurst();
    void postShared();
    void endBurst();

    const QString name_;
    const size_t mostAlone_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::deque<std::chrono::milliseconds> recent_; // when the latest notices came
    Post latest_;                                  // of the burst
    int sharing_ = 0;                              // notices in the burst's notification
    int shown_ = 0;                                // how many of them it tells of so far
    int number_ = 0;                               // of the burst, for its tag
    std::unique_ptr<Timer> pause_;                 // until the shared one may be replaced again
};

} // namespace quenby
