// Paints the status item: the same for the strip at the screen's edge and for the tray's icon, sharp at any scale.
//
// Threads: the main thread. Coordinates are logical pixels.
#pragma once

#include "app/statusitem/StatusItemLook.h"

#include <QColor>
#include <QImage>
#include <QRect>

class QPainter;

namespace quenby {

class GaugePainter {
public:
    GaugePainter();

    // The whole item. In a place that is higher than the item it stands in the middle.
    void paint(QPainter& painter, const QRect& rect, const StatusItemLook& look, bool isDarkSurrounding) const;
    // The gauge alone, scaled to the square, whatever the look says about showing it: a tray must show something.
    void paintIcon(QPainter& painter, const QRect& square, const StatusItemLook& look, bool isDarkSurrounding) const;

    // The colour of text and gauge.
    static QColor ink(const StatusItemLook& look, bool isDarkSurrounding);
    // A ring, and a sector that grows from the bottom against the clock. Percents above 100 are full.
    static void paintGauge(QPainter& painter, const QRectF& square, const QColor& colour, unsigned percent);

private:
    void paintGround(QPainter& painter, const QRect& rect, const StatusItemLook& look, bool isDarkSurrounding) const;

    const QImage backStatus_;
    const QImage backStatusLight_;
};

} // namespace quenby
