#include "recording/overlay/DashTile.h"

#include <QImage>
#include <QPainter>

#include <cmath>

namespace quenby {
namespace {

constexpr qreal dash = 5;         // points
constexpr qreal tolerance = 0.05; // pixels, that a dash may be off at the end of a tile
constexpr int longest = 64;       // periods, for odd ratios

// How many periods are a whole number of pixels.
int periodsOfTile(qreal period) {
    for (int count = 8; count < longest; ++count)
        if (std::abs(period * count - std::round(period * count)) < tolerance)
            return count;
    return longest;
}

QImage dashes(qreal ratio, int halfThickness) {
    const qreal period = dashPeriod * ratio;
    const int periods = periodsOfTile(period);
    QImage image(qRound(period * periods), 2 * halfThickness, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, outlineWidth * ratio, Qt::SolidLine, Qt::RoundCap));
    for (int index = 0; index <= periods; ++index) // the last one's cap reaches back into the tile
        painter.drawLine(QPointF(index * period, halfThickness), QPointF(index * period + dash * ratio, halfThickness));
    return image;
}

} // namespace

DashTile::DashTile(qreal devicePixelRatio)
    : devicePixelRatio_(devicePixelRatio)
    , halfThickness_(qCeil(outlineWidth * devicePixelRatio / 2)) {
    const QImage image = dashes(devicePixelRatio, halfThickness_);
    horizontal_ = QPixmap::fromImage(image);
    vertical_ = QPixmap::fromImage(image.transformed(QTransform(0, 1, 1, 0, 0, 0))); // as a mirror on the diagonal does
}

} // namespace quenby
