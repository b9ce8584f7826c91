#include "platform/linux/media/engine/player/Playback.h"

#include "core/CompletionGate.h"
#include "platform/linux/media/engine/player/FrameworkThreads.h"
#include "platform/linux/media/engine/player/MovieFile.h"
#include "platform/linux/media/engine/player/PlaybackReasons.h"

#include <QThreadPool>

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <mutex>
#include <optional>
#include <string_view>

namespace quenby {
namespace {

using std::chrono::milliseconds;

// As the toolkit has pixels in a 32-bit word.
constexpr const char* pixelFormat = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "BGRx" : "xRGB";
// Pictures wait for the sounds beside them, which may lie seconds further on in the file.
constexpr const char* roomyQueue = "queue max-size-buffers=0 max-size-bytes=67108864 max-size-time=5000000000 ";

// Put together by hand: the framework's own player now and then loses the error of a file that it cannot read, and
// would open anything that such a file names.
QByteArray pictureParts() {
    return QByteArray("filesrc name=file ! qtdemux name=demuxer demuxer.video_0 ! ") + roomyQueue +
           "! decodebin ! videoconvert ! videoflip video-direction=auto ! "
           "appsink name=pictures max-buffers=1 drop=true qos=true caps=video/x-raw,format=" +
           pixelFormat;
}
QByteArray soundParts() {
    return QByteArray(roomyQueue) +
           "name=first ! decodebin ! audioconvert ! audioresample ! volume name=volume ! autoaudiosink";
}
// Some damage leaves the framework waiting for ever.
constexpr std::chrono::seconds openingPatience{15};

using SharedPipeline = std::shared_ptr<GstElement>;
using GString = std::unique_ptr<gchar, decltype(&g_free)>;

// The first pipeline loads the framework, and after a change of packages reads all of its plug-ins, which takes
// seconds. Null when a part is missing. Threads: any; best not the main one.
SharedPipeline makePipeline() {
    if (!gst_init_check(nullptr, nullptr, nullptr)) // only the first call of the process counts
        return nullptr;
    GError* error = nullptr;
    GstElement* const pipeline = gst_parse_launch(pictureParts().constData(), &error);
    const GlibError owned(error);
    const SharedPipeline made(pipeline ? static_cast<GstElement*>(gst_object_ref_sink(pipeline)) : nullptr,
                              [](GstElement* unused) {
                                  if (unused)
                                      gst_object_unref(unused);
                              });
    return error ? nullptr : made;
}

milliseconds inMilliseconds(GstClockTime time) { return milliseconds(time / GST_MSECOND); }

// Its pixels can be read as long as it lives.
class MappedPicture {
public:
    MappedPicture(GstBuffer& buffer, const GstVideoInfo& info)
        : isMapped_(gst_video_frame_map(&frame_, &info, &buffer, GST_MAP_READ)) {}
    ~MappedPicture() {
        if (isMapped_)
            gst_video_frame_unmap(&frame_);
    }
    MappedPicture(const MappedPicture&) = delete;
    MappedPicture& operator=(const MappedPicture&) = delete;

    // Null without pixels. The image and its copies keep them.
    static QImage image(std::unique_ptr<MappedPicture> mapped) {
        if (!mapped->isMapped_)
            return {};
        const GstVideoFrame& frame = mapped->frame_;
        const auto* pixels = static_cast<const uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
        const auto release = [](void* done) { delete static_cast<MappedPicture*>(done); };
        QImage image(pixels, GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame),
                     GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0), QImage::Format_RGB32, release, mapped.get());
        if (!image.isNull())
            static_cast<void>(mapped.release());
        return image;
    }

private:
    GstVideoFrame frame_{};
    const bool isMapped_;
};

MoviePicture pictureOf(GstSample& sample) {
    GstVideoInfo info;
    const GstCaps* caps = gst_sample_get_caps(&sample);
    GstBuffer* buffer = gst_sample_get_buffer(&sample);
    if (!caps || !buffer || !gst_video_info_from_caps(&info, caps))
        return {};
    MoviePicture picture;
    picture.image = MappedPicture::image(std::make_unique<MappedPicture>(*buffer, info));
    picture.displaySize = QSizeF(double(info.width) * info.par_n / info.par_d, info.height);
    const GstClockTime time =
        gst_segment_to_stream_time(gst_sample_get_segment(&sample), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    if (GST_CLOCK_TIME_IS_VALID(time))
        picture.position = inMilliseconds(time);
    return picture;
}

} // namespace

// The newest picture on its way to the main thread: a window that is busy gets the next one, not a heap of them.
class Playback::PictureSlot {
public:
    // Whether somebody has to be sent for it.
    bool put(MoviePicture picture) {
        const std::lock_guard lock(mutex_);
        return !std::exchange(newest_, std::move(picture)).has_value();
    }
    std::optional<MoviePicture> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(newest_, std::nullopt);
    }
    void setRoom(const QSize& room) {
        const std::lock_guard lock(mutex_);
        room_ = room;
    }
    QSize room() {
        const std::lock_guard lock(mutex_);
        return room_;
    }

private:
    std::mutex mutex_;
    std::optional<MoviePicture> newest_;
    QSize room_;
};

// What the framework calls on its threads. The playback stops these before it goes.
struct Playback::Callbacks {
    static GstFlowReturn take(Playback& self, SampleHandle sample) {
        MoviePicture picture = sample ? pictureOf(*sample) : MoviePicture();
        if (picture.image.isNull())
            return GST_FLOW_OK;
        if (const QSize room = self.pictures_->room(); !room.isEmpty())
            picture.fitted = fittedImage(picture.image, fittedSize(picture.displaySize, room));
        if (self.pictures_->put(std::move(picture))) {
            self.mailbox_->post([&self] {
                if (const auto newest = self.pictures_->take())
                    Q_EMIT self.pictureCame(*newest);
            });
        }
        return GST_FLOW_OK;
    }
    static GstFlowReturn preroll(GstAppSink* sink, gpointer self) {
        return take(*static_cast<Playback*>(self), SampleHandle(gst_app_sink_pull_preroll(sink)));
    }
    static GstFlowReturn sample(GstAppSink* sink, gpointer self) {
        return take(*static_cast<Playback*>(self), SampleHandle(gst_app_sink_pull_sample(sink)));
    }

    static void padCame(GstElement*, GstPad* pad, gpointer data) {
        auto& self = *static_cast<Playback*>(data);
        const GString name(gst_pad_get_name(pad), &g_free);
        if (name.get() == std::string_view("video_0"))
            self.hasPictures_ = true;
        if (name.get() == std::string_view("audio_0"))
            self.addSound(*pad);
    }
    static void allPadsCame(GstElement*, gpointer data) {
        auto& self = *static_cast<Playback*>(data);
        if (!self.hasPictures_)
            self.mailbox_->post([&self] { self.fail(noPicturesReason()); });
    }

    static GstBusSyncReply message(GstBus*, GstMessage* message, gpointer data) {
        auto& self = *static_cast<Playback*>(data);
        switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_ERROR:
            self.mailbox_->post([&self, reason = reasonOf(*message)] { self.fail(reason); });
            break;
        case GST_MESSAGE_EOS:
            self.mailbox_->post([&self] { Q_EMIT self.ended(); });
            break;
        case GST_MESSAGE_ASYNC_DONE:
            self.mailbox_->post([&self] { Q_EMIT self.settled(); });
            break;
        default:
            break;
        }
        gst_message_unref(message);
        return GST_BUS_DROP;
    }
    static QString reasonOf(GstMessage& message) {
        GError* error = nullptr;
        gst_message_parse_error(&message, &error, nullptr);
        return playbackReason(*GlibError(error));
    }
};

Playback::Playback()
    : mailbox_(Mailbox::forContext(this))
    , pictures_(std::make_shared<PictureSlot>()) {}

Playback::~Playback() { stop(); }

void Playback::open(const QByteArray& path) {
    const CompletionGate<SharedPipeline> made(this, [this, path](const SharedPipeline& pipeline) {
        pipeline_ = pipeline;
        load(path);
    });
    frameworkThreads().start([made] { made.deliver(makePipeline()); });
}

void Playback::load(const QByteArray& path) {
    if (!isQuickTimeMovie(path))
        return fail(unopenedReason(path));
    if (!pipeline_)
        return fail(noPlayerReason());
    connectPipeline();
    g_object_set(part("file").get(), "location", path.constData(), nullptr);
    connect(&opening_, &QTimer::timeout, this, [this] { fail(unreadMovieReason()); });
    connect(this, &Playback::settled, &opening_, &QTimer::stop);
    opening_.setSingleShot(true);
    opening_.start(openingPatience);
    setPlaying(isPlaying_);
}

void Playback::connectPipeline() {
    const GstHandle<GstBus> bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(bus.get(), &Callbacks::message, this, nullptr);
    const auto demuxer = part("demuxer");
    g_signal_connect(demuxer.get(), "pad-added", G_CALLBACK(&Callbacks::padCame), this);
    g_signal_connect(demuxer.get(), "no-more-pads", G_CALLBACK(&Callbacks::allPadsCame), this);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = &Callbacks::preroll;
    callbacks.new_sample = &Callbacks::sample;
    gst_app_sink_set_callbacks(GST_APP_SINK(part("pictures").get()), &callbacks, this, nullptr);
}

GstHandle<GstElement> Playback::part(const char* name) const {
    return GstHandle<GstElement>(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
}

// On a thread of the framework. A movie whose sound cannot be played is shown without it.
void Playback::addSound(GstPad& pad) {
    GstElement* const sound = gst_parse_bin_from_description(soundParts().constData(), FALSE, nullptr);
    if (!sound)
        return;
    gst_bin_add(GST_BIN(pipeline_.get()), sound);
    const GstHandle<GstElement> first(gst_bin_get_by_name(GST_BIN(sound), "first"));
    const GstHandle<GstPad> entry(gst_element_get_static_pad(first.get(), "sink"));
    GstPad* const ghost = gst_ghost_pad_new("sink", entry.get());
    gst_element_add_pad(sound, ghost);
    if (gst_pad_link(&pad, ghost) != GST_PAD_LINK_OK) {
        gst_bin_remove(GST_BIN(pipeline_.get()), sound);
        return;
    }
    gst_element_sync_state_with_parent(sound);
    hasSound_ = true;
}

void Playback::setPlaying(bool isPlaying) {
    isPlaying_ = isPlaying;
    if (pipeline_)
        gst_element_set_state(pipeline_.get(), isPlaying ? GST_STATE_PLAYING : GST_STATE_PAUSED);
}

void Playback::seek(milliseconds position) {
    const auto flags = GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    const bool isOnItsWay =
        pipeline_ && gst_element_seek_simple(pipeline_.get(), GST_FORMAT_TIME, flags, position.count() * GST_MSECOND);
    if (!isOnItsWay)
        mailbox_->post([this] { Q_EMIT settled(); });
}

void Playback::setVolume(double volume) {
    // Loudness is heard by its third root.
    if (hasSound_ && pipeline_)
        g_object_set(part("volume").get(), "volume", volume * volume * volume, nullptr);
}

void Playback::setRoom(const QSize& room) { pictures_->setRoom(room); }

void Playback::stop() {
    if (!pipeline_)
        return;
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    const GstHandle<GstBus> bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
    pipeline_.reset();
}

milliseconds Playback::duration() const {
    gint64 duration = 0;
    if (!pipeline_ || !gst_element_query_duration(pipeline_.get(), GST_FORMAT_TIME, &duration) || duration < 0)
        return milliseconds(0);
    return inMilliseconds(GstClockTime(duration));
}

// The framework may tell of one trouble several times.
void Playback::fail(const QString& reason) {
    if (std::exchange(hasFailed_, true))
        return;
    opening_.stop();
    stop();
    Q_EMIT failed(reason);
}

} // namespace quenby
