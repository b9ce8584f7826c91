#include "platform/linux/media/engine/capture/MoviePipeline.h"

namespace quenby {
namespace {

constexpr auto encoderPart = "encoder";
constexpr auto muxerPart = "muxer";
constexpr auto filePart = "file";
constexpr auto muxedFormat = "video/x-h264,stream-format=avc,alignment=au";

using Count = std::shared_ptr<std::atomic<int>>;

GstPadProbeReturn countPicture(GstPad*, GstPadProbeInfo*, gpointer count) {
    ++**static_cast<Count*>(count);
    return GST_PAD_PROBE_OK;
}

void dropCount(gpointer count) { delete static_cast<Count*>(count); }

// The muxer says of itself that it takes no picture below 16 pixels, and writes any all the same.
GstPadProbeReturn anySizeFits(GstPad*, GstPadProbeInfo* info, gpointer) {
    GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(info);
    if (GST_QUERY_TYPE(query) == GST_QUERY_ACCEPT_CAPS) {
        gst_query_set_accept_caps_result(query, TRUE);
        return GST_PAD_PROBE_HANDLED;
    }
    if (GST_QUERY_TYPE(query) != GST_QUERY_CAPS)
        return GST_PAD_PROBE_OK;
    GstCaps* filter = nullptr;
    gst_query_parse_caps(query, &filter);
    GstCaps* caps = gst_caps_from_string(muxedFormat);
    if (filter) {
        GstCaps* const both = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(std::exchange(caps, both));
    }
    gst_query_set_caps_result(query, caps);
    gst_caps_unref(caps);
    return GST_PAD_PROBE_HANDLED;
}

} // namespace

MoviePipeline::MoviePipeline(Ended ended)
    : ended_(std::move(ended))
    , pipeline_([this](const PipelineReport& report) { tell(report); }) {}

Result<void> MoviePipeline::start(const Encoder& encoder, int frameRate, int descriptor) {
    // The muxer has an input only when somebody asks with what he brings.
    const std::pair<const char*, QByteArray> parts[] = {
        {"pictures", "appsrc name=given format=time block=true"},
        {"format", "videoconvert"}, // hardware has its own; nothing is done where the encoder takes them as they are
        {encoderPart, encoder.description(frameRate)},
        {muxerPart, QByteArray("capsfilter caps=") + muxedFormat +
                        " ! qtmux name=muxing fragment-duration=1000 fragment-mode=first-moov-then-finalise"},
        {filePart, "fdsink sync=false async=false fd=" + QByteArray::number(descriptor)},
    };
    for (const auto& [part, description] : parts)
        if (auto appended = pipeline_.append(part, description); !appended)
            return appended;
    gst_pad_add_probe(pipeline_.output(encoderPart).get(), GST_PAD_PROBE_TYPE_BUFFER, &countPicture,
                      new Count(recorded_), &dropCount);
    const GstHandle<GstPad> muxed(gst_element_get_static_pad(pipeline_.element("muxing"), "video_0"));
    gst_pad_add_probe(muxed.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, &anySizeFits, nullptr, nullptr);
    if (!pipeline_.start())
        return Error(URLErrorCode::unknown,
                     {{errorKey::reason,
                       QStringLiteral("The recording cannot be encoded: %1 does not start. Install the package "
                                      "gstreamer1.0-plugins-ugly, which has an encoder that works everywhere.")
                           .arg(QString::fromUtf8(encoder.name))}});
    return {};
}

GstAppSrc* MoviePipeline::pictures() const { return GST_APP_SRC(pipeline_.element("given")); }

void MoviePipeline::finish() { gst_app_src_end_of_stream(pictures()); }

void MoviePipeline::finishWithoutEncoder() {
    // Behind the encoder, whose own output may be held up for ever.
    gst_pad_send_event(pipeline_.input(muxerPart).get(), gst_event_new_eos());
}

void MoviePipeline::tell(const PipelineReport& report) {
    if (report.kind == PipelineReport::Kind::ended)
        return ended_(End::whole, {});
    if (report.isDiskFull)
        return ended_(End::diskFull, report.text);
    // Whatever else stands in the row fails only because of what the encoder or the file did.
    ended_(report.part == filePart || report.part == muxerPart ? End::writingFailed : End::encoderFailed, report.text);
}

} // namespace quenby
