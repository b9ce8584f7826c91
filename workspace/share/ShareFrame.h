// Where a share window goes for a dialog of some height.
#pragma once

#include <QRect>

namespace quenby {

// What a share window is higher than the dialog in it.
inline constexpr int shareWindowMargin = 70;

// The window's frame for a dialog of so many pixels, above 0, on the screen: left edge and width stay, the window is as
// high as the dialog and the margin, and stands somewhat above the middle. Its lower edge is above the screen's lower
// edge by the integer part of (screen height - dialog height + 70) / 2.
QRect shareFrame(const QRect& frame, const QRect& screen, int dialogHeight);

// The frame with its upper edge, where the dialog begins, inside the area, and no higher than that.
QRect keptInside(const QRect& frame, const QRect& area);

} // namespace quenby
