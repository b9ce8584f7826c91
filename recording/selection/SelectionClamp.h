// How a selection is kept on the screen. Coordinates as in SelectionHandles.h; the screen is always as large as the
// main one, whichever the selection is made on. Pure. Threads: any.
//
// Whatever comes in, a result lies on the screen, and its width and height are numbers and not negative.
#pragma once

#include "recording/selection/SelectionHandles.h"

#include <QRectF>
#include <QSizeF>

namespace quenby {

inline constexpr qreal smallestByHandle = 30; // points; the width and height that a handle leaves at least

// For a rectangle that is drawn or moved: one that would stick out beyond the right or upper edge takes the size that
// the selection had before, and stops at that edge.
QRectF clampedSelection(const QRectF& wanted, const QRectF& before, const QSizeF& screen);

// For a handle that the pointer moved by so much: its edges go along, the opposite ones stay.
QRectF resizedByHandle(int tag, const QRectF& before, const QPointF& movement, const QSizeF& screen);

} // namespace quenby
