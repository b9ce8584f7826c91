#include "recording/overlay/OverlayGround.h"

#include "recording/overlay/PixelGrid.h"

#include <QPainter>

namespace quenby {
namespace {

const QColor dim = QColor::fromRgbF(0, 0, 0, 0.5F);

} // namespace

void OverlayGround::fitPicture(const QSize& pixels) {
    if (source_.isNull() || pixels.isEmpty())
        return;
    source_.convertTo(QImage::Format_RGB32);
    source_.setDevicePixelRatio(1);
    picture_ =
        source_.size() == pixels ? source_ : source_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void OverlayGround::drawRect(QPainter& painter, const QRegion& region, const QRect& hole) const {
    const qreal ratio = painter.device()->devicePixelRatioF();
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    // Each rectangle is painted whole before the next, which may share pixels with it.
    for (const QRect& points : region) {
        const QRect pixels = allPixels(points, ratio);
        if (isTranslucent()) {
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.fillRect(pixels & hole, Qt::transparent);
        } else {
            painter.drawImage(pixels.topLeft(), picture_, pixels);
        }
        for (const QRect& around : QRegion(pixels) - hole)
            painter.fillRect(around, dim);
    }
    painter.restore();
}

} // namespace quenby
