#include "platform/linux/media/engine/player/PlaybackReasons.h"

#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

QString goneReason() {
    return QStringLiteral("The movie is not there any more. It may have been moved or deleted; record it again.");
}

QString unreadableReason() {
    return QStringLiteral("The movie cannot be read. Give yourself the right to read it, and open it again.");
}

} // namespace

QString noPlayerReason() {
    return QStringLiteral(
        "Movies cannot be played, because a part of the media framework is missing. Install it (on "
        "Debian the packages gstreamer1.0-plugins-base and gstreamer1.0-plugins-good) and try again.");
}

QString unopenedReason(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return goneReason();
    if (::access(path.constData(), R_OK) != 0)
        return unreadableReason();
    if (status.st_size == 0)
        return QStringLiteral("The movie is empty. Record it again.");
    return QStringLiteral("The file is not a movie that can be played here.");
}

QString noPicturesReason() { return QStringLiteral("There are no pictures in the movie."); }

QString unreadMovieReason() { return QStringLiteral("The movie cannot be played; it may be damaged or incomplete."); }

QString playbackReason(const GError& error) {
    if (g_error_matches(&error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND))
        return goneReason();
    if (g_error_matches(&error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ) ||
        g_error_matches(&error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED))
        return unreadableReason();
    if (g_error_matches(&error, GST_STREAM_ERROR, GST_STREAM_ERROR_CODEC_NOT_FOUND) ||
        g_error_matches(&error, GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN)) {
        return QStringLiteral("The movie cannot be played, because its decoder is missing. Install it (on Debian the "
                              "package gstreamer1.0-libav) and open the movie again.");
    }
    return QStringLiteral("The movie cannot be played any further; it may be damaged or incomplete. Details: %1")
        .arg(QString::fromUtf8(error.message));
}

} // namespace quenby
