// A small window without a frame that takes the keys and goes away by itself: by Escape, as soon as another window of
// the desktop has the keys instead, and by a click beside it. While a mouse button that was pressed beside it is held,
// it waits: something may be on its way to be dropped on it. Its corners are round and it has a shadow where the screen
// is composited. It is in no task bar and no pager.
//
// Threads: the main thread. Places are in logical pixels of the desktop and mean what is seen of the window, without
// the room that its shadow takes. Closing hides it.
#pragma once

#include "popover/window/X11ButtonWatch.h"

#include <QMargins>
#include <QWidget>

namespace quenby {

// In logical pixels. The corners are round where the screen is composited.
inline constexpr int customWindowCornerRadius = 6;
inline constexpr int customWindowBorder = 1;

class CustomWindow : public QWidget {
    Q_OBJECT

public:
    CustomWindow();

    QRect frame() const;
    // Also of a window that is on the screen. Not smaller than its border.
    void setFrame(const QRect& frame);
    // Brings the window to the front and gives it the keys, as far as the window manager allows that.
    void showAt(const QRect& frame);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setComposited(bool isComposited);
    void takePalette();
    void lookSoon();
    void closeIfLeft();
    void pressedSomewhere();
    void pressedHere();
    void releasedSomewhere();

    X11ButtonWatch buttons_;
    bool isComposited_ = false;
    bool isPressed_ = false;       // a mouse button, inside of the window
    bool isPressedBeside_ = false; // on what is not this program's, as far as is known
    bool isDraggedOver_ = false;
};

} // namespace quenby
