// Keeps the framework from grabbing the X server.
//
// Its source of screen pictures grabs the server around each of them, so that a window keeps its size meanwhile. In
// between it takes a lock of the X library that another thread holds while it connects to the server: a driver, or the
// next recording. Then each waits for the other, and with them the whole desktop, for ever. What is recorded here is
// the screen, and a size that changes is noticed without a grab (see XErrorTrap).
#pragma once

namespace quenby {

// A program that calls this has an XGrabServer() and an XUngrabServer() of its own that do nothing, from its very
// start, and the dynamic linker prefers them to the X library's. The toolkit's own grabs go another way. The call
// itself does nothing.
void useNoServerGrabs();

} // namespace quenby
