// Why a movie cannot be played, in sentences for people.
#pragma once

#include <QByteArray>
#include <QString>

#include <gst/gst.h>

namespace quenby {

QString noPlayerReason();
// Before the framework has seen the file: it is not there, not readable, or not a movie.
QString unopenedReason(const QByteArray& path);
QString noPicturesReason();
// The framework came to no end with it.
QString unreadMovieReason();
QString playbackReason(const GError& error);

} // namespace quenby
