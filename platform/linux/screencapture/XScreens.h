// The screens of an X display, in its pixels.
#pragma once

#include "platform/linux/screencapture/CaptureScreens.h"
#include "platform/linux/x11/XDisplay.h"

namespace quenby {

// In the toolkit's order; at least one.
QList<CaptureScreen> readScreens(const XDisplay& display);

} // namespace quenby
