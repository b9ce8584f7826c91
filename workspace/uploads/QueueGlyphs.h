// Pictures for what only the upload queue has buttons for. Like those of widgets/Glyphs.h, to be filled.
#pragma once

#include <QPainterPath>

namespace quenby {

QPainterPath toTopGlyph();
QPainterPath toBottomGlyph();
QPainterPath clearFinishedGlyph();

} // namespace quenby
