// Takes the pictures of a screen, cuts out what is recorded, and hands them on at a constant rate.
//
// Threads: as Pipeline. The pictures come on a thread of the framework.
#pragma once

#include "platform/linux/media/engine/capture/CaptureSource.h"
#include "platform/linux/media/engine/capture/PictureHandover.h"
#include "platform/linux/media/engine/capture/Pipeline.h"

namespace quenby {

class PicturePipeline {
public:
    // On the thread that made it: no more pictures come, because of this.
    using Gone = std::function<void(const QString& text)>;

    PicturePipeline(std::shared_ptr<PictureHandover> handover, Gone gone);

    // Once. Fails with a sentence.
    Result<void> start(const CaptureFeed& feed, int frameRate);
    // What has been taken is still handed on; then gone() tells that nothing more comes.
    void finish() { pipeline_.sendEnd(); }
    // No picture comes afterwards.
    void stop() { pipeline_.stop(); }

private:
    static GstPadProbeReturn sourceGave(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstFlowReturn pictureCame(GstAppSink* sink, gpointer self);
    GstPadProbeReturn sizeKnown(GstCaps* caps);
    void watchGuard();
    static GstPadProbeReturn guardSaw(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    GstPadProbeReturn bytesKnown(gsize bytes);

    // For the framework's threads.
    const std::shared_ptr<PictureHandover> handover_;
    CaptureFeed feed_;
    QSize size_;
    bool hasGiven_ = false; // a picture of that size
    GstHandle<GstElement> guard_;
    gsize bytes_ = 0; // of each picture at the guard; 0 before the first
    bool hasGone_ = false;

    Pipeline pipeline_; // last: it stops before the rest goes
};

} // namespace quenby
