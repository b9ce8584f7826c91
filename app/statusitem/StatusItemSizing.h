// How wide the status item is, and the font that its text is measured and drawn with.
#pragma once

#include <QFont>
#include <QString>

namespace quenby {

inline constexpr int statusItemHeight = 17; // logical pixels; the gauge is a square of this side

// The frame's width for a text of this width, in logical pixels. Not every term belongs to something that is drawn:
// with the icon switched off the item still keeps the icon's room, and only the text alone is given no room of its own.
qreal statusItemWidth(qreal textWidth, bool showMenubarIcon, bool showUsegeText);

// The desktop's font, 14.5 pixels high on a device with so many dots per inch.
QFont statusItemFont(int dotsPerInch);
// The same for measuring, which goes by the screen.
QFont statusItemFont();

// The width of the string drawn with the font, in logical pixels.
qreal widthOfString(const QString& string, const QFont& font);

} // namespace quenby
