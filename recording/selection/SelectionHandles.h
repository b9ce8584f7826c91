// The eight handles of a selection: where each stands, which edges it moves and what the pointer looks like over it.
//
// Points of one screen with their origin at the lower left, y upwards, here and in the whole folder: a rectangle's
// topLeft() is its lower left corner, and its top() the lower edge. Pure. Threads: any.
#pragma once

#include "recording/selection/SelectionCursor.h"

#include <QFlags>
#include <QRectF>

namespace quenby {

inline constexpr int handleCount = 8; // their tags are 1 to 8
inline constexpr qreal handleSide = 10;

enum class SelectionEdge { left = 1, right = 2, lower = 4, upper = 8 };
Q_DECLARE_FLAGS(SelectionEdges, SelectionEdge)
Q_DECLARE_OPERATORS_FOR_FLAGS(SelectionEdges)

SelectionEdges edgesOfHandle(int tag);
SelectionCursor cursorOfHandle(int tag);
QRectF frameOfHandle(int tag, const QRectF& selection);
// The tag of the first one there, 0 where there is none.
int handleAt(const QPointF& point, const QRectF& selection);

} // namespace quenby
