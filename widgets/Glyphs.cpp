#include "widgets/Glyphs.h"

#include <QPainterPathStroker>
#include <QPolygonF>

#include <cmath>
#include <numbers>

namespace quenby {
namespace {

// The gear.
constexpr int teeth = 8;
constexpr qreal rootRadius = 5.7; // between the teeth
constexpr qreal tipRadius = 7.6;
constexpr qreal hubRadius = 2.1;
// Of the angle from one tooth to the next: how far to either side of its middle.
constexpr qreal tipHalf = 0.17;
constexpr qreal footHalf = 0.27;

constexpr qreal plusArm = 5.25;
constexpr qreal plusWidth = 1.4;
constexpr qreal lineWidth = 1.3;

QPainterPath strokeOf(const QPainterPath& path, qreal width = lineWidth) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(path).simplified();
}

QPainterPath lines(std::initializer_list<QPolygonF> polygons) {
    QPainterPath path;
    for (const QPolygonF& polygon : polygons)
        path.addPolygon(polygon);
    return path;
}

QPainterPath spot(const QPointF& middle) {
    QPainterPath path;
    path.addEllipse(middle, 0.9, 0.9);
    return path;
}

QPolygonF loudspeaker() { return {{1.8, 6}, {4, 6}, {7, 3}, {7, 13}, {4, 10}, {1.8, 10}, {1.8, 6}}; }

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
    return strokeOf(wheel);
}

QPainterPath plusGlyph() {
    const qreal middle = glyphGrid / 2;
    QPainterPath arms;
    arms.moveTo(middle - plusArm, middle);
    arms.lineTo(middle + plusArm, middle);
    arms.moveTo(middle, middle - plusArm);
    arms.lineTo(middle, middle + plusArm);
    return strokeOf(arms, plusWidth);
}

QPainterPath homeGlyph() {
    return strokeOf(lines(
        {QPolygonF({{1.8, 8.2}, {8, 2.4}, {14.2, 8.2}}),
         QPolygonF(
             {{3.7, 6.8}, {3.7, 13.4}, {6.6, 13.4}, {6.6, 9.6}, {9.4, 9.6}, {9.4, 13.4}, {12.3, 13.4}, {12.3, 6.8}})}));
}

QPainterPath backGlyph() {
    return strokeOf(lines({QPolygonF({{13.2, 8}, {3, 8}}), QPolygonF({{7.4, 3.6}, {3, 8}, {7.4, 12.4}})}));
}

QPainterPath forwardGlyph() {
    return strokeOf(lines({QPolygonF({{2.8, 8}, {13, 8}}), QPolygonF({{8.6, 3.6}, {13, 8}, {8.6, 12.4}})}));
}

QPainterPath reloadGlyph() {
    QPainterPath path;
    const QRectF circle(2.8, 2.8, 10.4, 10.4);
    path.arcMoveTo(circle, 40);
    path.arcTo(circle, 40, 290);
    path.addPolygon(QPolygonF({{12.7, 1.7}, {12.4, 5.1}, {9, 4.8}}));
    return strokeOf(path);
}

QPainterPath newDocumentGlyph() {
    return strokeOf(lines({QPolygonF({{3.5, 2.2}, {9, 2.2}, {12.5, 5.7}, {12.5, 13.8}, {3.5, 13.8}, {3.5, 2.2}}),
                           QPolygonF({{9, 2.2}, {9, 5.7}, {12.5, 5.7}}), QPolygonF({{8, 7.6}, {8, 11.8}}),
                           QPolygonF({{5.9, 9.7}, {10.1, 9.7}})}));
}

QPainterPath uploadGlyph() {
    return strokeOf(lines({QPolygonF({{8, 10.4}, {8, 2.6}}), QPolygonF({{4.6, 6}, {8, 2.6}, {11.4, 6}}),
                           QPolygonF({{2.4, 10.2}, {2.4, 13.4}, {13.6, 13.4}, {13.6, 10.2}})}));
}

QPainterPath recordGlyph() {
    QPainterPath ring;
    ring.addEllipse(QPointF(8, 8), 5.8, 5.8);
    QPainterPath dot;
    dot.addEllipse(QPointF(8, 8), 2.8, 2.8);
    return strokeOf(ring).united(dot);
}

QPainterPath changesGlyph() {
    QPainterPath clock = lines({QPolygonF({{8, 4.6}, {8, 8}, {10.5, 9.6}})});
    clock.addEllipse(QPointF(8, 8), 5.9, 5.9);
    return strokeOf(clock);
}

QPainterPath transfersGlyph() {
    return strokeOf(lines({QPolygonF({{5, 13}, {5, 3}}), QPolygonF({{2.3, 5.7}, {5, 3}, {7.7, 5.7}}),
                           QPolygonF({{11, 3}, {11, 13}}), QPolygonF({{8.3, 10.3}, {11, 13}, {13.7, 10.3}})}));
}

QPainterPath fullScreenGlyph() {
    return strokeOf(
        lines({QPolygonF({{2.6, 6}, {2.6, 2.6}, {6, 2.6}}), QPolygonF({{10, 2.6}, {13.4, 2.6}, {13.4, 6}}),
               QPolygonF({{13.4, 10}, {13.4, 13.4}, {10, 13.4}}), QPolygonF({{6, 13.4}, {2.6, 13.4}, {2.6, 10}})}));
}

QPainterPath menuGlyph() {
    return strokeOf(lines(
        {QPolygonF({{2.6, 4}, {13.4, 4}}), QPolygonF({{2.6, 8}, {13.4, 8}}), QPolygonF({{2.6, 12}, {13.4, 12}})}));
}

QPainterPath pauseGlyph() {
    return strokeOf(lines({QPolygonF({{5.6, 3.6}, {5.6, 12.4}}), QPolygonF({{10.4, 3.6}, {10.4, 12.4}})}), 1.8);
}

QPainterPath resumeGlyph() { return strokeOf(lines({QPolygonF({{4.8, 3}, {12.6, 8}, {4.8, 13}, {4.8, 3}})})); }

QPainterPath crossGlyph() {
    return strokeOf(lines({QPolygonF({{4.5, 4.5}, {11.5, 11.5}}), QPolygonF({{11.5, 4.5}, {4.5, 11.5}})}));
}

QPainterPath folderGlyph() {
    return strokeOf(
        lines({QPolygonF({{1.8, 12.8}, {1.8, 3.2}, {6.2, 3.2}, {7.8, 5.2}, {14.2, 5.2}, {14.2, 12.8}, {1.8, 12.8}})}));
}

QPainterPath soundGlyph() {
    QPainterPath waves;
    for (const qreal radius : {3.0, 5.6}) {
        const QRectF circle(7.6 - radius, 8 - radius, 2 * radius, 2 * radius);
        waves.arcMoveTo(circle, -42);
        waves.arcTo(circle, -42, 84);
    }
    return strokeOf(lines({loudspeaker()})).united(strokeOf(waves));
}

QPainterPath mutedGlyph() {
    return strokeOf(lines({loudspeaker(), QPolygonF({{9.6, 5.8}, {14, 10.2}}), QPolygonF({{14, 5.8}, {9.6, 10.2}})}));
}

QPainterPath personGlyph() {
    QPainterPath person;
    person.addEllipse(QPointF(8, 5), 2.9, 2.9);
    person.moveTo(2.4, 13.8);
    person.cubicTo(2.4, 8.8, 13.6, 8.8, 13.6, 13.8);
    person.closeSubpath();
    return strokeOf(person);
}

QPainterPath infoGlyph() {
    QPainterPath ring = lines({QPolygonF({{8, 7.4}, {8, 11.4}})});
    ring.addEllipse(QPointF(8, 8), 6.2, 6.2);
    return strokeOf(ring).united(spot({8, 4.9}));
}

QPainterPath warningGlyph() {
    return strokeOf(
               lines({QPolygonF({{8, 2.2}, {14.4, 13.4}, {1.6, 13.4}, {8, 2.2}}), QPolygonF({{8, 6.4}, {8, 9.4}})}))
        .united(spot({8, 11.5}));
}

QPainterPath upGlyph() { return strokeOf(lines({QPolygonF({{3.5, 10}, {8, 5.5}, {12.5, 10}})}), 1.5); }

QPainterPath downGlyph() { return strokeOf(lines({QPolygonF({{3.5, 6}, {8, 10.5}, {12.5, 6}})}), 1.5); }

} // namespace quenby
