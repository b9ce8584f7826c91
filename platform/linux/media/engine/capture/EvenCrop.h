// What of a picture is recorded.
#pragma once

#include <QRect>
#include <QSize>

namespace quenby {

// The part of the picture that was asked for, with even width and height: what lies outside is left out, and an odd
// size grows by one pixel to the right or to the bottom; where there is no room, to the other side; where there is none
// either, because it is the whole picture, it shrinks. An empty request is the whole picture. Empty when nothing of the
// picture was asked for.
QRect evenCrop(const QRect& asked, const QSize& picture);

// The same request in a picture of another size.
QRect scaledCrop(const QRect& asked, const QSize& from, const QSize& to);

} // namespace quenby
