#include "popover/window/ButtonGlyphs.h"

#include <QPainterPathStroker>
#include <QPointF>
#include <QPolygonF>

#include <cmath>
#include <numbers>

namespace quenby {
namespace {

constexpr int teeth = 8;
constexpr qreal rootRadius = 5.7; // between the teeth
constexpr qreal tipRadius = 7.6;
constexpr qreal hubRadius = 2.1;
// Of the angle from one tooth to the next: how far to either side of its middle.
constexpr qreal tipHalf = 0.17;
constexpr qreal footHalf = 0.27;
constexpr qreal lineWidth = 1.3;
constexpr qreal plusArm = 5.25;
constexpr qreal plusWidth = 1.4;

QPainterPath strokeOf(const QPainterPath& path, qreal width) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(path);
}

} // namespace

QPainterPath gearGlyph() {
    const QPointF centre(glyphGrid / 2, glyphGrid / 2);
    const auto at = [&centre](qreal tooth, qreal radius) {
        const qreal angle = tooth * 2 * std::numbers::pi / teeth;
        return centre + QPointF(std::sin(angle), -std::cos(angle)) * (radius - lineWidth / 2);
    };
    QPolygonF rim;
    for (int tooth = 0; tooth < teeth; ++tooth) {
        rim << at(tooth - footHalf, rootRadius) << at(tooth - tipHalf, tipRadius) << at(tooth + tipHalf, tipRadius)
            << at(tooth + footHalf, rootRadius);
    }
    QPainterPath wheel;
    wheel.addPolygon(rim);
    wheel.closeSubpath();
    wheel.addEllipse(centre, hubRadius, hubRadius);
    return strokeOf(wheel, lineWidth).simplified();
}

QPainterPath plusGlyph() {
    const qreal middle = glyphGrid / 2;
    QPainterPath arms;
    arms.moveTo(middle - plusArm, middle);
    arms.lineTo(middle + plusArm, middle);
    arms.moveTo(middle, middle - plusArm);
    arms.lineTo(middle, middle + plusArm);
    return strokeOf(arms, plusWidth).simplified();
}

} // namespace quenby
