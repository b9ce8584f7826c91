// The toolkit's connection to the X server, for what windows have to say to it themselves. Threads: the main thread.
#pragma once

#include <xcb/xcb.h>

namespace quenby {

// Null on any other system. Owned by the toolkit.
xcb_connection_t* x11Connection();

} // namespace quenby
