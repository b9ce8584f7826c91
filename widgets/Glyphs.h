// Pictures for buttons, as outlines: sharp at every scale and in any colour.
#pragma once

#include <QIcon>
#include <QPainterPath>

namespace quenby {

// To be filled; on a square of this side.
inline constexpr qreal glyphGrid = 16;

QPainterPath gearGlyph();
QPainterPath plusGlyph();
QPainterPath homeGlyph();
QPainterPath backGlyph();
QPainterPath forwardGlyph();
QPainterPath reloadGlyph();
QPainterPath newDocumentGlyph();
QPainterPath uploadGlyph();
QPainterPath recordGlyph();
QPainterPath changesGlyph();
QPainterPath transfersGlyph();
QPainterPath fullScreenGlyph();
QPainterPath menuGlyph();
QPainterPath pauseGlyph();
QPainterPath resumeGlyph();
QPainterPath crossGlyph();
QPainterPath upGlyph();
QPainterPath downGlyph();
QPainterPath folderGlyph();
QPainterPath soundGlyph();
QPainterPath mutedGlyph();
QPainterPath personGlyph();
QPainterPath infoGlyph();
QPainterPath warningGlyph();
// In the text colour of the program's palette as it is when the icon is painted; mirrored in a right-to-left window
// when it points somewhere.
QIcon glyphIcon(const QPainterPath& glyph, bool pointsSomewhere = false);
// With a dot in the corner, in the palette's colour of what is chosen: something runs.
QIcon markedGlyphIcon(const QPainterPath& glyph);

} // namespace quenby
