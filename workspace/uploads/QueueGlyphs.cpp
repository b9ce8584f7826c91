#include "workspace/uploads/QueueGlyphs.h"

#include "widgets/Glyphs.h"

#include <QPainterPathStroker>
#include <QPolygonF>
#include <QTransform>

namespace quenby {
namespace {

constexpr qreal lineWidth = 1.4;

QPainterPath strokeOf(std::initializer_list<QPolygonF> lines) {
    QPainterPath path;
    for (const QPolygonF& line : lines)
        path.addPolygon(line);
    QPainterPathStroker stroker;
    stroker.setWidth(lineWidth);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(path).simplified();
}

QPainterPath upsideDown(const QPainterPath& path) { return QTransform(1, 0, 0, -1, 0, glyphGrid).map(path); }

} // namespace

// An arrow's head against a line.
QPainterPath toTopGlyph() {
    return strokeOf({QPolygonF({{3.5, 3}, {12.5, 3}}), QPolygonF({{3.5, 11.5}, {8, 7}, {12.5, 11.5}})});
}

QPainterPath toBottomGlyph() { return upsideDown(toTopGlyph()); }

// A tick, and a small cross.
QPainterPath clearFinishedGlyph() {
    return strokeOf({QPolygonF({{1.6, 7.4}, {4.8, 10.6}, {11, 3.4}}), QPolygonF({{10.2, 9.4}, {14.2, 13.4}}),
                     QPolygonF({{14.2, 9.4}, {10.2, 13.4}})});
}

} // namespace quenby
