// Pictures from and to an X display, in its own pixels.
#pragma once

#include "platform/linux/x11/XDisplay.h"

#include <QImage>

#include <optional>

namespace quenby {

// How pixels of the display's root window look in memory; nothing for a display whose pixels cannot be understood.
std::optional<QImage::Format> pixelFormat(const XDisplay& display);

// Everything that all screens show now, without the pointer, as Format_RGB32; null when it cannot be had. One round
// trip.
QImage takeDesktopPicture(const XDisplay& display);

// Sends the picture to a place in a window (or pixmap) that is like the root window.
void putPicture(const XDisplay& display, xcb_drawable_t window, xcb_gcontext_t context, const QImage& picture,
                const QPoint& position);

} // namespace quenby
