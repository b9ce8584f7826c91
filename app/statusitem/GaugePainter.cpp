#include "app/statusitem/GaugePainter.h"

#include "app/statusitem/StatusItemSizing.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace quenby {
namespace {

constexpr qreal gaugeSide = 17;
constexpr qreal gaugeRadius = 8;
constexpr qreal ringWidth = 1.3;
constexpr qreal sectorLineWidth = 0.1;
constexpr qreal bottomAngle = 270; // degrees, against the clock from three o'clock
constexpr qreal fullTurn = 360;

constexpr qreal textLeftOfGauge = 26;
constexpr qreal textLeftAlone = 4;
constexpr qreal textBottom = 2; // from the item's lower edge to the bottom of the line

QColor popoverBlue() { return QColor::fromRgbF(0.2823529541492462F, 0.3529411852359772F, 0.9960784316062927F); }
QColor dragGrey() { return QColor::fromRgbF(0.5F, 0.5F, 0.5F); }

void paintText(QPainter& painter, const StatusItemLook& look, const QColor& colour) {
    const QFont font = statusItemFont(painter.device()->logicalDpiY());
    const qreal baseline = statusItemHeight - textBottom - QFontMetricsF(font, painter.device()).descent();
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(QPointF(look.showMenubarIcon ? textLeftOfGauge : textLeftAlone, baseline), look.strsize);
}

} // namespace

GaugePainter::GaugePainter()
    : backStatus_(QStringLiteral(":/quenby/statusitem/backStatus.png"))
    , backStatusLight_(QStringLiteral(":/quenby/statusitem/backStatusLight.png")) {}

QColor GaugePainter::ink(const StatusItemLook& look, bool isDarkSurrounding) {
    return look.drag || look.isPopoverVisible || isDarkSurrounding ? Qt::white : Qt::black;
}

void GaugePainter::paint(QPainter& painter, const QRect& rect, const StatusItemLook& look,
                         bool isDarkSurrounding) const {
    painter.save();
    painter.setClipRect(rect, Qt::IntersectClip);
    paintGround(painter, rect, look, isDarkSurrounding);
    painter.translate(rect.left(), rect.top() + (rect.height() - statusItemHeight) / 2);
    const QColor colour = ink(look, isDarkSurrounding);
    if (look.showUsegeText)
        paintText(painter, look, colour);
    if (look.showMenubarIcon)
        paintGauge(painter, QRectF(0, 0, gaugeSide, gaugeSide), colour, look.displaysize);
    painter.restore();
}

void GaugePainter::paintIcon(QPainter& painter, const QRect& square, const StatusItemLook& look,
                             bool isDarkSurrounding) const {
    painter.save();
    painter.setClipRect(square, Qt::IntersectClip);
    paintGround(painter, square, look, isDarkSurrounding);
    paintGauge(painter, square, ink(look, isDarkSurrounding), look.displaysize);
    painter.restore();
}

void GaugePainter::paintGround(QPainter& painter, const QRect& rect, const StatusItemLook& look,
                               bool isDarkSurrounding) const {
    if (look.drag)
        painter.fillRect(rect, dragGrey());
    else if (look.isPopoverVisible)
        painter.fillRect(rect, popoverBlue());
    if (!look.isPopoverVisible)
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(rect, isDarkSurrounding ? backStatus_ : backStatusLight_);
}

void GaugePainter::paintGauge(QPainter& painter, const QRectF& square, const QColor& colour, unsigned percent) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    // The ring is wider than its square by a hair on each side.
    painter.setClipRect(square, Qt::IntersectClip);
    painter.translate(square.topLeft());
    painter.scale(square.width() / gaugeSide, square.height() / gaugeSide);

    const QPointF centre(gaugeSide / 2, gaugeSide / 2);
    const QRectF circle(centre.x() - gaugeRadius, centre.y() - gaugeRadius, 2 * gaugeRadius, 2 * gaugeRadius);
    painter.setPen(QPen(colour, ringWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(circle);

    QPainterPath sector(centre);
    sector.arcTo(circle, bottomAngle, std::min(percent, 100U) / 100.0 * fullTurn);
    painter.setPen(QPen(colour, sectorLineWidth));
    painter.setBrush(colour);
    painter.drawPath(sector);
    painter.restore();
}

} // namespace quenby
