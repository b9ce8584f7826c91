// The application's connection to the X server. Threads: the main thread.
#pragma once

#include "core/CAllocated.h"

#include <QByteArray>
#include <QRect>

#include <optional>

#include <xcb/xcb.h>

namespace quenby {

// Owned by the toolkit.
struct XDisplay {
    xcb_connection_t* connection = nullptr;
    xcb_screen_t* screen = nullptr; // the one that the application is on

    // Nothing where the application does not run on X11.
    static std::optional<XDisplay> ofApplication();

    QRect desktop() const { return {0, 0, screen->width_in_pixels, screen->height_in_pixels}; }
    // XCB_ATOM_NONE when nobody uses that name yet.
    xcb_atom_t atom(const QByteArray& name) const;
};

} // namespace quenby
