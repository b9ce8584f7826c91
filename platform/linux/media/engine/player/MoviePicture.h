// One picture of a movie. Threads: any; copies share the pixels.
#pragma once

#include <QImage>
#include <QSizeF>

#include <chrono>

namespace quenby {

struct MoviePicture {
    QImage image;       // as the movie has it
    QImage fitted;      // as large as it will be painted; null when the image is no larger than that
    QSizeF displaySize; // the image's size, for pixels that are not square
    std::chrono::milliseconds position{0};
};

// As large as fits into the room, in pixels, and no side nothing.
QSize fittedSize(const QSizeF& displaySize, const QSize& room);
// Null when there is nothing to make smaller.
QImage fittedImage(const QImage& image, const QSize& size);

} // namespace quenby
