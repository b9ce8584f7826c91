// The windows that can be chosen on an X display.
#pragma once

#include "platform/linux/screencapture/CaptureScreens.h"
#include "platform/linux/x11/XDisplay.h"

namespace quenby {

// Frames of the windows that are on the screen now, with what the window manager puts around them but without shadows,
// cut to the desktop; the topmost first. The desktop's own background is no window. A fixed number of round trips.
QList<QRect> readWindows(const XDisplay& display, const QList<CaptureScreen>& screens);

} // namespace quenby
