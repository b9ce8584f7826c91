// The pointer while a part of the screen is chosen: a cross whose middle stays free.
#pragma once

#include "platform/linux/x11/XDisplay.h"

namespace quenby {

// As large as the screen's scale makes it. The caller frees it.
xcb_cursor_t makeCaptureCursor(const XDisplay& display, qreal scale);

} // namespace quenby
