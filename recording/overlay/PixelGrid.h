// Rectangles of the view on the pixels of the device, so that edges are sharp at every scale. Pure. Threads: any.
#pragma once

#include <QRect>
#include <QRectF>

namespace quenby {

// Each edge goes to the nearest pixel by itself, as it does for the picture that is recorded.
inline QRect nearestPixels(const QRectF& points, qreal devicePixelRatio) {
    const QPoint topLeft(qRound(points.left() * devicePixelRatio), qRound(points.top() * devicePixelRatio));
    const QPoint end(qRound(points.right() * devicePixelRatio), qRound(points.bottom() * devicePixelRatio));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

inline QRect allPixels(const QRect& points, qreal devicePixelRatio) {
    return QRectF(QPointF(points.topLeft()) * devicePixelRatio, QSizeF(points.size()) * devicePixelRatio)
        .toAlignedRect();
}

inline QRectF pointsOf(const QRect& pixels, qreal devicePixelRatio) {
    return {QPointF(pixels.topLeft()) / devicePixelRatio, QSizeF(pixels.size()) / devicePixelRatio};
}

} // namespace quenby
