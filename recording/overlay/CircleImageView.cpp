#include "recording/overlay/CircleImageView.h"

#include "recording/overlay/PixelGrid.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr qreal ring = 2; // points of white around the grey
const QColor grey(128, 128, 128);

} // namespace

void CircleImageView::drawRect(QPainter& painter) const {
    // Every handle looks the same when all of them begin on a pixel.
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QPoint corner = nearestPixels(frame_, ratio).topLeft();
    const QSizeF side = (frame_.size() * ratio).toSize();
    const QRectF bounds(QPointF(corner) / ratio, side / ratio);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(bounds);
    painter.setBrush(grey);
    painter.drawEllipse(bounds.adjusted(ring, ring, -ring, -ring));
    painter.restore();
}

} // namespace quenby
