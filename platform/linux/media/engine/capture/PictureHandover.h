// Where pictures pass from the screen to the movie. Either side can be exchanged or fail without the other.
//
// Threads: any.
#pragma once

#include "platform/linux/media/engine/GstHandles.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

#include <functional>
#include <mutex>

namespace quenby {

class PictureHandover {
public:
    // The function is called with the first picture, once, on the thread that brings it.
    explicit PictureHandover(std::function<void()> firstCame)
        : firstCame_(std::move(firstCame)) {}

    // Where they go from now on; null: nowhere. For each movie the time starts at 0.
    void connectTo(GstAppSrc* movie, int frameRate);
    // Waits while the movie does not keep up. Repeated pictures, which are marked as gaps, are left out then, and the
    // one before them is shown for longer: encoding them would put the movie behind for ever.
    void give(GstSample* picture);

private:
    bool isLeftOut(GstSample* picture);
    GstBuffer* stamped(GstBuffer* picture) const;

    const std::function<void()> firstCame_;
    std::mutex mutex_; // guards what follows
    GstHandle<GstAppSrc> movie_;
    int frameRate_ = 1;
    guint64 given_ = 0;
    bool hasCome_ = false;
    bool isBehind_ = false;
};

} // namespace quenby
