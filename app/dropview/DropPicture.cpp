#include "app/dropview/DropPicture.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace quenby {
namespace {

constexpr qreal frameInset = 1.5;
constexpr qreal greatestFrameRadius = 10;
constexpr qreal margin = 12;
constexpr qreal arrowGrid = 40; // the arrow's side where there is room
constexpr qreal gap = 8;

// In a place as small as a button, of the shorter side.
constexpr qreal radiusShare = 0.25;
constexpr qreal arrowShare = 0.58;
constexpr qreal thinnestLine = 1.4;
constexpr float smallInkStrength = 0.8F; // as buttons' pictures have it

qreal shorterSide(const QRectF& rect) { return std::min(rect.width(), rect.height()); }

void paintFrame(QPainter& painter, const QRectF& rect, const QColor& colour) {
    QPen pen(colour, 1.5);
    pen.setDashPattern({4, 3});
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const qreal radius = std::min(greatestFrameRadius, shorterSide(rect) * radiusShare);
    painter.drawRoundedRect(rect.adjusted(frameInset, frameInset, -frameInset, -frameInset), radius, radius);
}

// On a grid of 40 x 40; the line gets thinner with it.
void paintArrow(QPainter& painter, const QPointF& origin, qreal side, const QColor& colour) {
    QPainterPath path;
    path.moveTo(20, 27);
    path.lineTo(20, 6);
    path.moveTo(12, 14);
    path.lineTo(20, 6);
    path.lineTo(28, 14);
    path.moveTo(6, 25);
    path.lineTo(6, 31);
    path.quadTo(6, 34, 9, 34);
    path.lineTo(31, 34);
    path.quadTo(34, 34, 34, 31);
    path.lineTo(34, 25);
    painter.setPen(
        QPen(colour, std::max(2.5, thinnestLine * arrowGrid / side), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.save();
    painter.translate(origin);
    painter.scale(side / arrowGrid, side / arrowGrid);
    painter.drawPath(path);
    painter.restore();
}

} // namespace

void paintDropPicture(QPainter& painter, const QRectF& rect, const DropPicture& picture) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    paintFrame(painter, rect, picture.accent);

    const QRectF inner = rect.adjusted(margin, margin, -margin, -margin);
    const QFontMetricsF metrics(picture.font, painter.device());
    const qreal arrowSide = std::min(arrowGrid, shorterSide(rect) * arrowShare);
    const bool hasCaption = !picture.caption.isEmpty() && inner.height() >= arrowSide + gap + metrics.height();
    const qreal height = arrowSide + (hasCaption ? gap + metrics.height() : 0);
    const qreal top = inner.center().y() - height / 2;
    QColor ink = picture.ink;
    if (arrowSide < arrowGrid)
        ink.setAlphaF(smallInkStrength);
    paintArrow(painter, QPointF(inner.center().x() - arrowSide / 2, top), arrowSide, ink);
    if (hasCaption) {
        painter.setFont(picture.font);
        painter.setPen(picture.ink);
        const QRectF line(inner.left(), top + arrowSide + gap, inner.width(), metrics.height());
        painter.drawText(line, Qt::AlignCenter, metrics.elidedText(picture.caption, Qt::ElideRight, line.width()));
    }
    painter.restore();
}

} // namespace quenby
