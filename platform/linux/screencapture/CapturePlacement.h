// Where the small things stand that are drawn over the picture: always wholly on their screen, and out of each other's
// way as long as there is room. All in pixels of the desktop's picture.
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>

namespace quenby {

// Below and to the right of the pointer; on the other side where the screen ends.
QRect magnifierPlace(const QSize& size, const QPoint& pointer, int distance, const QRect& screen);

// Beside the visible part of the rectangle, else within it.
QRect readoutPlace(const QSize& size, const QRect& rectangle, int distance, const QRect& screen, const QRect& avoided);

// In the middle of the lower edge, or of the upper one when something is in the way.
QRect hintPlace(const QSize& size, int distance, const QRect& screen, const QList<QRect>& avoided);

} // namespace quenby
