#include "platform/linux/media/engine/player/MovieFactsReader.h"

#include "platform/linux/media/engine/player/GstHandles.h"
#include "platform/linux/media/engine/player/MovieFile.h"

#include <gst/pbutils/pbutils.h>

#include <QThreadPool>

namespace quenby {
namespace {

// For a file that keeps the framework busy without an end.
constexpr GstClockTime patience = 5 * GST_SECOND;

bool isTurnedSideways(const GstDiscovererStreamInfo* stream) {
    gchar* turn = nullptr;
    if (const GstTagList* tags = gst_discoverer_stream_info_get_tags(const_cast<GstDiscovererStreamInfo*>(stream)))
        gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &turn);
    const QByteArray text(turn);
    g_free(turn);
    return text.endsWith("-90") || text.endsWith("-270");
}

QSize naturalSize(GstDiscovererInfo* info) {
    GList* const streams = gst_discoverer_info_get_video_streams(info);
    QSize size(0, 0);
    if (streams) {
        auto* stream = static_cast<GstDiscovererStreamInfo*>(streams->data);
        auto* video = GST_DISCOVERER_VIDEO_INFO(stream);
        size = QSize(int(gst_discoverer_video_info_get_width(video)), int(gst_discoverer_video_info_get_height(video)));
        if (isTurnedSideways(stream))
            size.transpose();
    }
    gst_discoverer_stream_info_list_free(streams);
    return size;
}

MovieFacts factsOf(const QByteArray& path) {
    if (!isQuickTimeMovie(path) || !gst_init_check(nullptr, nullptr, nullptr))
        return {};
    const GlibHandle<GstDiscoverer> discoverer(gst_discoverer_new(patience, nullptr));
    if (!discoverer)
        return {};
    GError* error = nullptr;
    const GlibHandle<GstDiscovererInfo> info(
        gst_discoverer_discover_uri(discoverer.get(), movieAddress(path).constData(), &error));
    const GlibError owned(error);
    // Without its decoder a movie has its facts all the same.
    const GstDiscovererResult result = info ? gst_discoverer_info_get_result(info.get()) : GST_DISCOVERER_ERROR;
    if (result != GST_DISCOVERER_OK && result != GST_DISCOVERER_MISSING_PLUGINS)
        return {};
    return {naturalSize(info.get()), double(gst_discoverer_info_get_duration(info.get())) / GST_SECOND};
}

} // namespace

void readMovieFacts(const QByteArray& path, QObject* context, MoviePlayers::FactsRead read) {
    const CompletionGate<const MovieFacts&> gate(context, std::move(read));
    QThreadPool::globalInstance()->start([path, gate] { gate.deliver(factsOf(path)); });
}

} // namespace quenby
