// The screen as a person has it: what can be seen on it, and the pointer.
//
// The pointer's events take the display's own road: they come from the X server's test extension, to whichever window
// is there. Positions are pixels of the screen. Threads: the main thread.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QWidget>

#include <xcb/xcb.h>

namespace quenby::bench {

class Screen {
public:
    // Ends the program outside of X11.
    Screen();

    // Where scripts/desktop/session.sh puts it: the panel lies along the lower edge, and its tray, at the right end,
    // has nothing but our item.
    static QPoint trayItem();

    void movePointer(const QPoint& position);
    void clickMiddleButton();

    // Waits until the X server has done all that it was told.
    void finish();
    QImage picture(const QRect& part);
    // What is seen where the window is. The toolkit learns later than the screen where it was put.
    QImage picture(const QWidget& window);

private:
    void fake(uint8_t type, uint8_t detail, const QPoint& position);

    xcb_connection_t* const connection_;
};

} // namespace quenby::bench
