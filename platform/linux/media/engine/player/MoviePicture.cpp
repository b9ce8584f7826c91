#include "platform/linux/media/engine/player/MoviePicture.h"

namespace quenby {

QSize fittedSize(const QSizeF& displaySize, const QSize& room) {
    return displaySize.scaled(room, Qt::KeepAspectRatio).toSize().expandedTo({1, 1});
}

QImage fittedImage(const QImage& image, const QSize& size) {
    if (size.width() >= image.width() && size.height() >= image.height())
        return {};
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace quenby
