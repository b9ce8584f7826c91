// The pictures on the popover's buttons, as outlines: sharp at every scale and in any colour.
#pragma once

#include <QPainterPath>

namespace quenby {

// To be filled; on a square of this side.
inline constexpr qreal glyphGrid = 16;

QPainterPath gearGlyph();
QPainterPath plusGlyph();

} // namespace quenby
