#include "platform/linux/media/engine/capture/PictureHandover.h"

#include <algorithm>

namespace quenby {
namespace {

// What waits for the encoder: enough for its short pauses, and not the memory of the whole computer.
constexpr guint64 mostBytesWaiting = 48 * 1024 * 1024;
constexpr guint64 leastPicturesWaiting = 4;

// Square pixels: some screens claim others by their size in millimetres.
void describePictures(GstAppSrc* movie, GstSample* picture, int frameRate) {
    GstCaps* const caps = gst_caps_copy(gst_sample_get_caps(picture));
    gst_caps_set_simple(caps, "framerate", GST_TYPE_FRACTION, frameRate, 1, "pixel-aspect-ratio", GST_TYPE_FRACTION, 1,
                        1, nullptr);
    gst_app_src_set_caps(movie, caps);
    gst_caps_unref(caps);
    const guint64 size = gst_buffer_get_size(gst_sample_get_buffer(picture));
    gst_app_src_set_max_bytes(movie, std::max(mostBytesWaiting, leastPicturesWaiting * size));
}

} // namespace

void PictureHandover::connectTo(GstAppSrc* movie, int frameRate) {
    const std::lock_guard lock(mutex_);
    movie_.reset(movie ? GST_APP_SRC(gst_object_ref(movie)) : nullptr);
    frameRate_ = frameRate;
    given_ = 0;
    isBehind_ = false;
}

void PictureHandover::give(GstSample* picture) {
    GstHandle<GstAppSrc> movie;
    GstBuffer* buffer = nullptr;
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex_);
        isFirst = !std::exchange(hasCome_, true);
        if (movie_ && !isLeftOut(picture)) {
            movie.reset(GST_APP_SRC(gst_object_ref(movie_.get())));
            if (given_ == 0)
                describePictures(movie.get(), picture, frameRate_);
            buffer = stamped(gst_sample_get_buffer(picture));
        }
        ++given_;
    }
    if (isFirst)
        firstCame_();
    // Not under the lock: it may wait, and whoever disconnects must not.
    if (movie)
        gst_app_src_push_buffer(movie.get(), buffer);
}

// A stall of the whole computer is another thing: the movie was not behind when the picture before it came.
bool PictureHandover::isLeftOut(GstSample* picture) {
    const bool isFull = gst_app_src_get_current_level_bytes(movie_.get()) >= gst_app_src_get_max_bytes(movie_.get());
    if (GST_BUFFER_FLAG_IS_SET(gst_sample_get_buffer(picture), GST_BUFFER_FLAG_GAP))
        return isBehind_ && isFull;
    isBehind_ = isFull;
    return false;
}

// Times are counted, not measured: all steps are alike.
GstBuffer* PictureHandover::stamped(GstBuffer* picture) const {
    GstBuffer* const buffer = gst_buffer_copy(picture);
    const auto rate = static_cast<guint64>(frameRate_);
    const GstClockTime begin = gst_util_uint64_scale(given_, GST_SECOND, rate);
    GST_BUFFER_PTS(buffer) = begin;
    GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(given_ + 1, GST_SECOND, rate) - begin;
    GST_BUFFER_FLAG_UNSET(buffer, GST_BUFFER_FLAG_GAP);
    return buffer;
}

} // namespace quenby
