#include "recording/overlay/OutlineLayer.h"

#include "recording/overlay/PixelGrid.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr int walkDuration = 500; // milliseconds, for one dash and its gap
constexpr int walkCount = 10'000;

} // namespace

OutlineLayer::OutlineLayer(QObject* parent)
    : QObject(parent) {
    linePhase_.setObjectName(QStringLiteral("linePhase"));
    linePhase_.setStartValue(0.0);
    linePhase_.setEndValue(dashPeriod);
    linePhase_.setDuration(walkDuration);
    linePhase_.setLoopCount(walkCount);
    connect(&linePhase_, &QVariantAnimation::valueChanged, this, &OutlineLayer::walk);
}

void OutlineLayer::setPath(const QRect& path, qreal devicePixelRatio) {
    path_ = path;
    if (tile_.devicePixelRatio() != devicePixelRatio)
        tile_ = DashTile(devicePixelRatio);
}

void OutlineLayer::start() {
    if (linePhase_.state() != QAbstractAnimation::Running)
        linePhase_.start();
}

void OutlineLayer::stop() { linePhase_.stop(); }

void OutlineLayer::walk(const QVariant& lineDashPhase) {
    const int phase = qFloor(lineDashPhase.toReal() * tile_.devicePixelRatio());
    if (std::exchange(lineDashPhase_, phase) != phase)
        Q_EMIT walked(
            frameAround(pointsOf(path_, tile_.devicePixelRatio()), tile_.halfThickness() / tile_.devicePixelRatio()));
}

// Round the rectangle from its upper left corner; the handles cover the corners.
void OutlineLayer::drawRect(QPainter& painter) const {
    painter.save();
    painter.scale(1 / tile_.devicePixelRatio(), 1 / tile_.devicePixelRatio());
    const int half = tile_.halfThickness();
    const int thickness = 2 * half;
    const int right = path_.x() + path_.width();
    const int lower = path_.y() + path_.height();
    // Where in the pattern a side begins that is drawn along the walk, and one that is drawn against it: there a dash
    // stands where on the way out there is a gap.
    const auto along = [this](int walked) { return std::fmod(walked + lineDashPhase_, tile_.period()); };
    const auto against = [this](int walked) {
        const qreal period = tile_.period();
        return std::fmod(period / 2 - std::fmod(walked + lineDashPhase_, period) + period, period);
    };
    const auto drawLevel = [&](int y, qreal offset) {
        painter.drawTiledPixmap(QRectF(path_.x(), y - half, path_.width(), thickness), tile_.horizontal(), {offset, 0});
    };
    const auto drawUpright = [&](int x, qreal offset) {
        painter.drawTiledPixmap(QRectF(x - half, path_.y(), thickness, path_.height()), tile_.vertical(), {0, offset});
    };
    drawLevel(path_.y(), along(0));
    drawUpright(right, along(path_.width()));
    drawLevel(lower, against(2 * path_.width() + path_.height()));
    drawUpright(path_.x(), against(2 * path_.width() + 2 * path_.height()));
    painter.restore();
}

QRegion frameAround(const QRectF& rectangle, qreal distance) {
    const QRect outside = rectangle.adjusted(-distance, -distance, distance, distance).toAlignedRect();
    const QRectF hole = rectangle.adjusted(distance, distance, -distance, -distance);
    // What lies wholly inside.
    const QPoint topLeft(qCeil(hole.left()), qCeil(hole.top()));
    const QPoint end(qFloor(hole.right()), qFloor(hole.bottom()));
    if (end.x() <= topLeft.x() || end.y() <= topLeft.y())
        return outside;
    return QRegion(outside) - QRect(topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y()));
}

} // namespace quenby
