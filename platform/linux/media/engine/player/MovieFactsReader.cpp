#include "platform/linux/media/engine/player/MovieFactsReader.h"

#include "platform/linux/media/engine/GstHandles.h"
#include "platform/linux/media/engine/player/FrameworkThreads.h"
#include "platform/linux/media/engine/player/MovieFile.h"

#include <QThreadPool>

namespace quenby {
namespace {

// For a file that keeps the framework busy without an end.
constexpr GstClockTime patience = 5 * GST_SECOND;
// As far as the first picture's data, which is not decoded: a movie has its facts without its decoder.
constexpr const char* parts = "filesrc name=file ! qtdemux name=demuxer demuxer.video_0 ! queue ! "
                              "fakesink name=pictures sync=false";

// A movie's pipeline; it is stopped when it goes.
class FactsPipeline {
public:
    explicit FactsPipeline(const QByteArray& path) {
        GError* error = nullptr;
        GstElement* const pipeline = gst_parse_launch(parts, &error);
        const GlibError owned(error);
        if (pipeline)
            pipeline_.reset(GST_ELEMENT(gst_object_ref_sink(pipeline)));
        isWhole_ = pipeline && !error;
        if (isWhole_)
            g_object_set(part("file").get(), "location", path.constData(), nullptr);
    }
    ~FactsPipeline() {
        if (pipeline_)
            gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    }
    FactsPipeline(const FactsPipeline&) = delete;
    FactsPipeline& operator=(const FactsPipeline&) = delete;

    // Whether there is a picture.
    bool load() {
        if (!isWhole_)
            return false;
        gst_element_set_state(pipeline_.get(), GST_STATE_PAUSED);
        const GstHandle<GstBus> bus(gst_element_get_bus(pipeline_.get()));
        constexpr auto wanted =
            static_cast<GstMessageType>(GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_ERROR | GST_MESSAGE_EOS);
        GstMessage* const message = gst_bus_timed_pop_filtered(bus.get(), patience, wanted);
        const bool isLoaded = message && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ASYNC_DONE;
        if (message)
            gst_message_unref(message);
        return isLoaded;
    }

    double seconds() const {
        gint64 duration = 0;
        const bool isKnown = gst_element_query_duration(pipeline_.get(), GST_FORMAT_TIME, &duration) && duration > 0;
        return isKnown ? double(duration) / GST_SECOND : 0;
    }

    QSize naturalSize() const {
        const GstHandle<GstPad> pad(gst_element_get_static_pad(part("pictures").get(), "sink"));
        QSize size = codedSize(*pad);
        if (isTurnedSideways(*pad))
            size.transpose();
        return size;
    }

private:
    GstHandle<GstElement> part(const char* name) const {
        return GstHandle<GstElement>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
    }

    static QSize codedSize(GstPad& pad) {
        int width = 0;
        int height = 0;
        GstCaps* const caps = gst_pad_get_current_caps(&pad);
        if (!caps)
            return {0, 0};
        const GstStructure* format = gst_caps_get_structure(caps, 0);
        gst_structure_get_int(format, "width", &width);
        gst_structure_get_int(format, "height", &height);
        gst_caps_unref(caps);
        return {width, height};
    }

    static bool isTurnedSideways(GstPad& pad) {
        QByteArray turn;
        for (guint number = 0; GstEvent* event = gst_pad_get_sticky_event(&pad, GST_EVENT_TAG, number); ++number) {
            GstTagList* tags = nullptr;
            gchar* text = nullptr;
            gst_event_parse_tag(event, &tags);
            if (gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &text))
                turn = text;
            g_free(text);
            gst_event_unref(event);
        }
        return turn.endsWith("-90") || turn.endsWith("-270");
    }

    GstHandle<GstElement> pipeline_;
    bool isWhole_ = false;
};

MovieFacts factsOf(const QByteArray& path) {
    if (!isQuickTimeMovie(path) || !gst_init_check(nullptr, nullptr, nullptr))
        return {};
    FactsPipeline pipeline(path);
    return pipeline.load() ? MovieFacts{pipeline.naturalSize(), pipeline.seconds()} : MovieFacts();
}

} // namespace

void readMovieFacts(const QByteArray& path, QObject* context, MoviePlayers::FactsRead read) {
    const CompletionGate<const MovieFacts&> gate(context, std::move(read));
    frameworkThreads().start([path, gate] { gate.deliver(factsOf(path)); });
}

} // namespace quenby
