#include "platform/linux/media/engine/capture/EncoderChoice.h"

#include "platform/linux/media/engine/GstHandles.h"
#include "platform/linux/media/engine/capture/CaptureLog.h"
#include "platform/linux/media/engine/capture/GstSetup.h"

#include <algorithm>
#include <iterator>

namespace quenby {
namespace {

constexpr int secondsBetweenKeyFrames = 2;
constexpr GstClockTime longestTry = 5 * GST_SECOND;

struct KnownEncoder {
    const char* name;
    const char* settings; // %1: pictures from one key frame to the next
};

// x264enc limits the rate also where it is asked for a quality, unless its buffer has no size.
constexpr KnownEncoder knownEncoders[] = {
    {"vah264enc", "rate-control=cqp qpi=23 qpp=25 qpb=27 key-int-max=%1"},
    {"vaapih264enc", "rate-control=cqp init-qp=24 keyframe-period=%1"},
    {"nvh264enc", "rc-mode=constqp qp-const=24 gop-size=%1"},
    {"v4l2h264enc", "extra-controls=\"controls,video_bitrate=12000000,video_gop_size=%1,h264_profile=4\""},
    {"x264enc", "speed-preset=veryfast pass=qual quantizer=23 vbv-buf-capacity=0 key-int-max=%1"},
    {"openh264enc", "usage-type=screen rate-control=quality bitrate=8000000 qp-max=28 gop-size=%1"},
};

QByteArray withSettings(const QByteArray& encoder, int frameRate) {
    const QByteArray bare = encoder.mid(encoder.lastIndexOf('!') + 1).trimmed();
    const auto known = std::find_if(std::begin(knownEncoders), std::end(knownEncoders),
                                    [&bare](const KnownEncoder& candidate) { return bare == candidate.name; });
    if (known == std::end(knownEncoders))
        return encoder;
    return encoder + ' ' +
           QByteArray(known->settings).replace("%1", QByteArray::number(secondsBetweenKeyFrames * frameRate));
}

} // namespace

QByteArray Encoder::description(int frameRate) const {
    // Profiles that every player and every browser has.
    QByteArray steps =
        withSettings(name, frameRate) +
        " ! capsfilter caps=\"video/x-h264,profile=(string){high,main,constrained-high,constrained-baseline}\"";
    // One of them speaks the form of the stream that movies need, the others need a translator.
    if (missingElement("h264parse").isEmpty())
        steps += " ! h264parse";
    return steps;
}

QString encoderTrouble(const Encoder& encoder) {
    const QByteArray line = "videotestsrc num-buffers=3 ! video/x-raw,format=I420,width=320,height=240,framerate=30/1,"
                            "colorimetry=bt709 ! videoconvert ! " +
                            encoder.description(30) + " ! fakesink";
    GError* error = nullptr;
    const GstHandle<GstElement> pipeline(
        gst_parse_launch_full(line.constData(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
    if (error)
        return QString::fromUtf8(GlibError(error)->message);
    gst_object_ref_sink(pipeline.get());
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    const GstHandle<GstBus> bus(gst_element_get_bus(pipeline.get()));
    GstMessage* end = gst_bus_timed_pop_filtered(bus.get(), longestTry,
                                                 static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    QString text = end ? QString() : QStringLiteral("it does not answer");
    if (end && GST_MESSAGE_TYPE(end) == GST_MESSAGE_ERROR) {
        gst_message_parse_error(end, &error, nullptr);
        text = QString::fromUtf8(GlibError(error)->message);
    }
    if (end)
        gst_message_unref(end);
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return text;
}

QList<Encoder> installedEncoders(const QStringList& chosen) {
    QList<QByteArray> names;
    for (const QString& name : chosen)
        names.append(name.toUtf8());
    if (names.isEmpty())
        for (const KnownEncoder& known : knownEncoders)
            names.append(known.name);
    QList<Encoder> encoders;
    for (const QByteArray& name : names) {
        if (const QByteArray missing = missingElement(name); !missing.isEmpty()) {
            qCDebug(captureLog, "%s is not installed", missing.constData());
            continue;
        }
        encoders.append({name});
    }
    return encoders;
}

} // namespace quenby
