#include "popover/window/WindowShadow.h"

#include <QPainter>
#include <QPainterPath>

namespace quenby {
namespace {

constexpr int reach = 16;
constexpr qreal fall = 4; // the shadow lies lower than the window
constexpr float strength = 0.32F;

} // namespace

void paintWindowShadow(QPainter& painter, const QRectF& window, qreal cornerRadius) {
    QPainterPath around;
    around.addRect(window.adjusted(-reach - 1, -reach - 1, reach + 1, reach + 1 + fall));
    QPainterPath inside;
    inside.addRoundedRect(window, cornerRadius, cornerRadius);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setClipPath(around.subtracted(inside));
    // One over the other, each a little larger than the next: together they fade to nothing by the square of the
    // distance.
    for (int spread = reach; spread > 0; --spread) {
        const float rise = 2.0F * static_cast<float>(reach - spread + 1) / (reach * (reach + 1));
        painter.setBrush(QColor::fromRgbF(0, 0, 0, strength * rise));
        painter.drawRoundedRect(window.adjusted(-spread, -spread + fall, spread, spread + fall), cornerRadius + spread,
                                cornerRadius + spread);
    }
    painter.restore();
}

} // namespace quenby
