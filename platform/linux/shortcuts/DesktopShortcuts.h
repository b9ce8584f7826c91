// The one place that chooses how global shortcuts are had: on X11 by grabbing the keys, which acts at once and asks
// nobody; on Wayland by the desktop's portal; else there are none, with the reason.
#pragma once

#include "platform/GlobalShortcuts.h"

#include <memory>

namespace quenby {

// Asks the application for its kind of display, which has to be there.
std::unique_ptr<GlobalShortcuts> makeDesktopShortcuts();

} // namespace quenby
