// What a window without a frame tells an X11 window manager, and asks it. On other systems nothing is told.
//
// Threads: the main thread. Each call waits for the X server, a fraction of a millisecond.
#pragma once

#include <QMargins>

class QWindow;

namespace quenby {

// Whether windows may be translucent: always on Wayland, on X11 while a compositing manager runs.
bool isScreenComposited();

// Leaves the window out of task bars and pagers. Window managers forget it when the window is hidden, so it is said
// before each show.
void keepOffTaskBars(const QWindow& window);

// So much at the window's edges is only shadow, in logical pixels: it neither snaps to anything nor gets a shadow of
// the compositor's.
void tellShadow(const QWindow& window, const QMargins& shadow);

} // namespace quenby
