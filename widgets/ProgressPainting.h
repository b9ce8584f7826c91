// The bars of this window: a groove with round ends, filled from where lines begin.
#pragma once

#include <QPalette>
#include <QRectF>

class QPainter;

namespace quenby {

struct ProgressLook {
    QColor text; // of what the bar belongs to; the groove is made of it
    QColor fill;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

// Nothing is filled at 0 percent or below.
void paintProgress(QPainter& painter, const QRectF& rect, const ProgressLook& look, int percent);

} // namespace quenby
