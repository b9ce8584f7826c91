// The pointer over the popover's grip: which ways it can be dragged from here.
#pragma once

#include <QCursor>

namespace quenby {

enum class GripWay { up, upAndDown, down };

// At this height, in logical pixels, with the grip at this edge.
GripWay gripWay(int height, Qt::Edge movingEdge);
QCursor gripCursor(GripWay way, qreal devicePixelRatio);

} // namespace quenby
