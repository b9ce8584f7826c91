#include "popover/window/GripCursor.h"

#include "popover/window/PopoverHeight.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace quenby {
namespace {

constexpr int side = 24;

// An arrow away from a bar. Points up, about the middle.
QPainterPath arrowFromBar() {
    QPainterPath path;
    path.addRect(-6, 3, 12, 2);
    path.addRect(-1, -4, 2, 7);
    path.moveTo(0, -8);
    path.lineTo(4.5, -3);
    path.lineTo(-4.5, -3);
    path.closeSubpath();
    return path.simplified();
}

QPixmap arrowPicture(bool isUp, qreal devicePixelRatio) {
    QPixmap picture(QSize(side, side) * devicePixelRatio);
    picture.setDevicePixelRatio(devicePixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(side / 2.0, side / 2.0);
    painter.rotate(isUp ? 0 : 180);
    const QPainterPath arrow = arrowFromBar();
    // Seen on every ground.
    painter.strokePath(arrow, QPen(Qt::white, 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(arrow, Qt::black);
    return picture;
}

} // namespace

GripWay gripWay(int height, Qt::Edge movingEdge) {
    if (height > leastPopoverHeight && height < greatestPopoverHeight)
        return GripWay::upAndDown;
    const bool isGrown = height >= greatestPopoverHeight;
    return isGrown == (movingEdge == Qt::BottomEdge) ? GripWay::up : GripWay::down;
}

QCursor gripCursor(GripWay way, qreal devicePixelRatio) {
    if (way == GripWay::upAndDown)
        return Qt::SizeVerCursor;
    return QCursor(arrowPicture(way == GripWay::up, devicePixelRatio));
}

} // namespace quenby
