// The keyboard of an X11 desktop for a window that the window manager does not know, and so never gives it to. On other
// systems nothing happens.
//
// The keyboard is asked for, never grabbed: a window that ends cannot keep it, and the desktop's own keys go on
// working. Threads: the main thread. Each call waits for the X server, a fraction of a millisecond.
#pragma once

#include <QtGlobal>

class QWindow;

namespace quenby {

class X11InputFocus {
public:
    X11InputFocus() = default;
    // Gives it back.
    ~X11InputFocus();
    X11InputFocus(const X11InputFocus&) = delete;
    X11InputFocus& operator=(const X11InputFocus&) = delete;

    // The window, which may still be about to come to the screen, gets the keyboard.
    void take(QWindow& window);
    // To whom had it before, unless somebody else has it by now.
    void giveBack();

private:
    quint32 window_ = 0;
    quint32 previous_ = 0;
};

} // namespace quenby
