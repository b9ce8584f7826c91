#include "platform/linux/media/engine/capture/PicturePipeline.h"

#include "platform/linux/media/engine/capture/EvenCrop.h"

#include <gst/video/video.h>

#include <chrono>

namespace quenby {
namespace {

constexpr auto sourcePart = "source";
constexpr auto cropPart = "crop";

// Longer than any work that a busy computer is late with.
constexpr std::chrono::milliseconds patienceWithSource(10'000);

// Pictures are cut before they are anything else, and repeated after they were converted. The queue lets the screen be
// read in time while a picture is converted.
QByteArray pacingDescription(int frameRate) {
    return "videorate skip-to-first=true ! capsfilter caps=video/x-raw,framerate=" + QByteArray::number(frameRate) +
           "/1";
}

} // namespace

PicturePipeline::PicturePipeline(std::shared_ptr<PictureHandover> handover, Gone gone)
    : handover_(std::move(handover))
    , pipeline_([gone = std::move(gone)](const PipelineReport& report) { gone(report.text); }) {}

Result<void> PicturePipeline::start(const CaptureFeed& feed, int frameRate) {
    feed_ = feed;
    const std::pair<const char*, QByteArray> parts[] = {
        {sourcePart, feed.description},
        {cropPart, "videocrop name=cropping"},
        {"queue", "queue max-size-buffers=3 max-size-bytes=0 max-size-time=0"},
        {"conversion", "videoconvert ! capsfilter caps=video/x-raw,format=I420,colorimetry=bt709"},
        {"pacing", pacingDescription(frameRate)},
        {"handover", "appsink name=pictures sync=false max-buffers=1 enable-last-sample=false"},
    };
    for (const auto& [part, description] : parts)
        if (auto appended = pipeline_.append(part, description); !appended)
            return appended;
    const auto watched = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);
    gst_pad_add_probe(pipeline_.output(sourcePart).get(), watched, &PicturePipeline::sourceGave, this, nullptr);
    watchGuard();
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = &PicturePipeline::pictureCame;
    gst_app_sink_set_callbacks(GST_APP_SINK(pipeline_.element("pictures")), &callbacks, this, nullptr);
    if (!pipeline_.start())
        return Error(URLErrorCode::unknown,
                     {{errorKey::reason, QStringLiteral("The screen cannot be read. Try again; if it does not help, "
                                                        "restart the desktop session.")}});
    return {};
}

GstPadProbeReturn PicturePipeline::sourceGave(GstPad*, GstPadProbeInfo* info, gpointer self) {
    auto* const pipeline = static_cast<PicturePipeline*>(self);
    if (pipeline->hasGone_)
        return GST_PAD_PROBE_DROP;
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) {
        GstEvent* const event = GST_PAD_PROBE_INFO_EVENT(info);
        if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS)
            return GST_PAD_PROBE_OK;
        GstCaps* caps = nullptr;
        gst_event_parse_caps(event, &caps);
        return pipeline->sizeKnown(caps);
    }
    // The element takes no notice of such an error and would repeat its last picture for ever.
    if (pipeline->pipeline_.hasXError()) {
        pipeline->hasGone_ = true;
        pipeline->pipeline_.postFailure(sourcePart, QStringLiteral("The X server refused to show the screen."));
        return GST_PAD_PROBE_DROP;
    }
    pipeline->hasGiven_ = true;
    return GST_PAD_PROBE_OK;
}

void PicturePipeline::watchGuard() {
    guard_.reset(gst_bin_get_by_name(GST_BIN(pipeline_.element(sourcePart)), CaptureFeed::stallGuard));
    if (!guard_)
        return;
    const GstHandle<GstPad> output(gst_element_get_static_pad(guard_.get(), "src"));
    gst_pad_add_probe(output.get(), GST_PAD_PROBE_TYPE_BUFFER, &PicturePipeline::guardSaw, this, nullptr);
}

GstPadProbeReturn PicturePipeline::guardSaw(GstPad*, GstPadProbeInfo* info, gpointer self) {
    auto* const pipeline = static_cast<PicturePipeline*>(self);
    if (pipeline->hasGone_)
        return GST_PAD_PROBE_DROP;
    return pipeline->bytesKnown(gst_buffer_get_size(GST_PAD_PROBE_INFO_BUFFER(info)));
}

// Some desktops change the size of their pictures without saying so.
GstPadProbeReturn PicturePipeline::bytesKnown(gsize bytes) {
    if (bytes == 0) // no picture: a note of the desktop's about something else
        return GST_PAD_PROBE_DROP;
    if (bytes == bytes_)
        return GST_PAD_PROBE_OK;
    if (bytes_ != 0) {
        hasGone_ = true;
        pipeline_.postFailure(sourcePart, QStringLiteral("The screen's pictures have another size now."));
        return GST_PAD_PROBE_DROP;
    }
    bytes_ = bytes;
    g_object_set(guard_.get(), "timeout", static_cast<int>(patienceWithSource.count()), nullptr);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn PicturePipeline::sizeKnown(GstCaps* caps) {
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps))
        return GST_PAD_PROBE_OK;
    const QSize size(info.width, info.height);
    if (size == size_)
        return GST_PAD_PROBE_OK;
    const QRect crop = evenCrop(scaledCrop(feed_.crop, feed_.cropSize, size), size);
    // A movie has one size. Before its first picture, the element that turns pictures may still learn that it has to.
    const bool isOther = hasGiven_ || (!feed_.onlySize.isEmpty() && size != feed_.onlySize);
    if (isOther || crop.isEmpty()) {
        hasGone_ = true;
        pipeline_.postFailure(sourcePart, isOther ? QStringLiteral("The screen has another size now.")
                                                  : QStringLiteral("Nothing of the selection lies on the screen."));
        return GST_PAD_PROBE_DROP;
    }
    size_ = size;
    g_object_set(pipeline_.element("cropping"), "left", crop.x(), "top", crop.y(), "right",
                 size.width() - crop.x() - crop.width(), "bottom", size.height() - crop.y() - crop.height(), nullptr);
    return GST_PAD_PROBE_OK;
}

GstFlowReturn PicturePipeline::pictureCame(GstAppSink* sink, gpointer self) {
    const SampleHandle picture(gst_app_sink_pull_sample(sink));
    if (!picture)
        return GST_FLOW_EOS;
    static_cast<PicturePipeline*>(self)->handover_->give(picture.get());
    return GST_FLOW_OK;
}

} // namespace quenby
