// Saves a picture of the screen as a PNG file.
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QImage>

namespace quenby {

// Atomically, in the place of what is there. The scale (pixels for one point) becomes the picture's resolution.
// Threads: any; it takes its time.
MaybeError savePicture(QImage picture, qreal scale, const QByteArray& path);

} // namespace quenby
