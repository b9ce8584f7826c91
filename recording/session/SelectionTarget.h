// Which display a selection on the overlay means, and which of its pixels. Pure. Threads: any.
//
// Selections are in points with their origin at the lower left, as the overlay reports them: of the overlay's own
// display, or, moved by its place, of the main display. Displays are as platform/Displays.h tells them: y downwards.
#pragma once

#include "platform/Displays.h"

#include <QRectF>

#include <optional>

namespace quenby {

// Where the display's lower left corner lies as seen from the main display's.
QPointF lowerLeft(const Display& display, const Display& mainDisplay);

// The display under the lower left corner of the selection, which is in the main display's coordinates. A display has
// its left and its lower edge, not the other two: every point lies on one of those that are side by side. Nothing when
// the corner lies on no display, or on several that show the same.
std::optional<Display> displayUnder(const QRectF& selection, const QList<Display>& displays,
                                    const Display& mainDisplay);

// The pixels of the display that a selection on it covers, the origin at its top left; what lies outside is left out.
QRect selectedPixels(const QRectF& selection, const Display& display);

} // namespace quenby
