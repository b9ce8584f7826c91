// The window that covers one display, above everything else, while it is chosen what to record; see DrawMouseBoxView.
//
// One for each display. It neither grabs the keyboard nor the pointer. Its owner deletes it, in a slot of its signals,
// too, and when the displays change. Threads: the main thread.
#pragma once

#include "platform/Displays.h"
#include "recording/overlay/X11InputFocus.h"

#include <QWidget>

namespace quenby {

class DrawMouseBoxView;
struct RecordingState;

class OverlayWindow final : public QWidget {
    Q_OBJECT

public:
    // The displays and the state outlive it.
    OverlayWindow(const Display& display, const Display& mainDisplay, const Displays& displays, RecordingState& state);
    ~OverlayWindow() override;

    // Shows it exactly on the display. Where nothing shines through a window, what it shows of the display is what is
    // there now. One of the program's overlays takes the keyboard, for Escape; a press on another one moves it there
    // only if it was lost.
    void present(bool takesKeyboard);

    const Display& display() const { return display_; }
    DrawMouseBoxView& view() const { return *view_; }

Q_SIGNALS:
    // Points of this display, the origin at its lower left, y upwards; for the whole screen the main display's frame,
    // whichever this is. At most once. It comes from the event loop.
    void didSelectRect(const QRectF& rect);
    // Escape, or the desktop's own way to close it. It comes from the event loop.
    void abandoned();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void takeLostKeyboard();

    const Display display_;
    const Displays& displays_;
    X11InputFocus keyboard_;
    DrawMouseBoxView* const view_;
};

} // namespace quenby
