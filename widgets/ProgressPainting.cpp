#include "widgets/ProgressPainting.h"

#include <QPainter>

#include <algorithm>

namespace quenby {
namespace {

constexpr float grooveStrength = 0.15F;

} // namespace

void paintProgress(QPainter& painter, const QRectF& rect, const ProgressLook& look, int percent) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor groove = look.text;
    groove.setAlphaF(grooveStrength);
    painter.setBrush(groove);
    const qreal radius = rect.height() / 2;
    painter.drawRoundedRect(rect, radius, radius);
    if (percent > 0) {
        QRectF done(rect);
        done.setWidth(std::max(rect.height(), rect.width() * std::min(percent, 100) / 100.0));
        if (look.direction == Qt::RightToLeft)
            done.moveRight(rect.right());
        painter.setBrush(look.fill);
        painter.drawRoundedRect(done, radius, radius);
    }
    painter.restore();
}

} // namespace quenby
