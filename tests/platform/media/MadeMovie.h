// Movies for tests, made on the spot by the framework.
#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>

#include <gst/gst.h>

namespace quenby::testing {

struct MadeMovie {
    QSize size{320, 200};
    // Each is seen for a second, at 15 pictures a second. Names of the framework's patterns.
    QList<QByteArray> colours{"red", "green", "blue"};
    QByteArray layout{}; // the muxer's settings
    bool hasSound = false;
};

// False: the framework cannot make it here.
inline bool makeMovie(const MadeMovie& movie, const QByteArray& path) {
    gst_init_check(nullptr, nullptr, nullptr);
    QByteArray description = "concat name=all ! x264enc key-int-max=30 tune=zerolatency ! h264parse ! ";
    description += "qtmux name=movie " + movie.layout + " ! filesink location=\"" + path + "\" ";
    if (movie.hasSound)
        description += "audiotestsrc num-buffers=" + QByteArray::number(44 * movie.colours.size()) +
                       " ! audio/x-raw,rate=44100 ! audioconvert ! avenc_aac ! movie. ";
    for (const QByteArray& colour : movie.colours) {
        description += "videotestsrc num-buffers=15 pattern=" + colour +
                       " ! video/x-raw,framerate=15/1,width=" + QByteArray::number(movie.size.width()) +
                       ",height=" + QByteArray::number(movie.size.height()) + " ! all. ";
    }
    GError* error = nullptr;
    GstElement* pipeline = gst_parse_launch(description.constData(), &error);
    if (!pipeline || error)
        return false;
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus* bus = gst_element_get_bus(pipeline);
    GstMessage* end = gst_bus_timed_pop_filtered(bus, 60 * GST_SECOND,
                                                 static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool isMade = end && GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS;
    if (end)
        gst_message_unref(end);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return isMade;
}

// The same movie as a turned camera would have taken it: its first track's pictures are shown a quarter clockwise.
inline QByteArray turnedMovie(QByteArray movie) {
    constexpr int beforeMatrix = 4 + 40; // the kind, and what stands before the matrix in such a header
    const qsizetype place = movie.indexOf("tkhd") + beforeMatrix;
    return movie.replace(place, 20, QByteArray::fromHex("00000000 00010000 00000000 ffff0000 00000000"));
}

} // namespace quenby::testing
