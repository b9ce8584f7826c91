#include "popover/changes/RowPicture.h"

#include <QIcon>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

constexpr qreal borderWidth = 0.7;
constexpr qreal mostCut = 0.08; // of the longer side
constexpr int cautionSide = 34;

// As on a road, on a square of this side.
constexpr qreal cautionGrid = 32;

QPainterPath roundedTriangle() {
    QPainterPath corners;
    corners.addPolygon(QPolygonF({{16, 5}, {28.5, 26.5}, {3.5, 26.5}}));
    corners.closeSubpath();
    QPainterPathStroker round;
    round.setWidth(5);
    round.setJoinStyle(Qt::RoundJoin);
    return corners.united(round.createStroke(corners));
}

QPixmap paintedCaution(QSize size, qreal devicePixelRatio) {
    QPixmap picture(size * devicePixelRatio);
    picture.setDevicePixelRatio(devicePixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size.width() / cautionGrid, size.height() / cautionGrid);
    painter.fillPath(roundedTriangle(), QColor(245, 184, 46));
    const QColor ink(74, 50, 0);
    painter.setPen(QPen(ink, 3, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(16, 11.5), QPointF(16, 18));
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    painter.drawEllipse(QPointF(16, 23.3), 1.8, 1.8);
    return picture;
}

// How large the picture becomes; larger than the room where a little of it may be cut.
QSize fittedSize(QSize picture, QSize room) {
    const QSize inside = picture.scaled(room, Qt::KeepAspectRatio);
    const QSize around = picture.scaled(room, Qt::KeepAspectRatioByExpanding);
    const bool isNearlyOfItsShape = around.width() * (1 - mostCut) <= room.width() && //
                                    around.height() * (1 - mostCut) <= room.height();
    return (isNearlyOfItsShape ? around : inside).expandedTo({1, 1});
}

} // namespace

QPixmap fittedPicture(const QImage& picture, QSize room, qreal devicePixelRatio) {
    if (picture.isNull())
        return {};
    const QSize pixels = (QSizeF(room) * devicePixelRatio).toSize();
    const QImage scaled =
        picture.scaled(fittedSize(picture.size(), pixels), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QSize size = scaled.size().boundedTo(pixels);
    const QPoint cut((scaled.width() - size.width()) / 2, (scaled.height() - size.height()) / 2);
    QPixmap fitted = QPixmap::fromImage(scaled.copy(QRect(cut, size)));
    fitted.setDevicePixelRatio(devicePixelRatio);
    return fitted;
}

QPixmap cautionPicture(QSize room, qreal devicePixelRatio) {
    const QSize size = QSize(cautionSide, cautionSide).boundedTo(room);
    const QIcon themed = QIcon::fromTheme(QStringLiteral("dialog-warning"));
    return themed.isNull() ? paintedCaution(size, devicePixelRatio) : themed.pixmap(size, devicePixelRatio);
}

void paintSheet(QPainter& painter, const QRectF& frame, const QColor& colour) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.translate(frame.center());
    painter.drawPolygon(QPolygonF({{-8, -11}, {2, -11}, {8, -5}, {8, 11}, {-8, 11}}));
    painter.drawPolyline(QPolygonF({{2, -11}, {2, -5}, {8, -5}}));
    painter.restore();
}

void paintPictureBorder(QPainter& painter, const QRectF& frame, const QColor& colour) {
    QPainterPath border;
    border.addRect(frame);
    border.addRect(frame.adjusted(borderWidth, borderWidth, -borderWidth, -borderWidth));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(border, colour);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

} // namespace quenby
