// What the user chooses, as a model: the pointer and keys go in, a rectangle comes out. It knows neither windows of its
// own nor a display.
//
// How it works for the user:
// - Region mode, at the start. A drag makes a rectangle, both of its corner pixels included, and letting go takes it.
//   The space bar held meanwhile carries the rectangle along. Arrow keys move the pointer by one pixel (Shift: ten),
//   and the corner under it; a drag that was touched up like that is not taken when the button is let go, but stays.
// - A rectangle that stays is moved by arrow keys or the pointer, and resized at its right and lower edges by Ctrl or
//   Alt with arrow keys (from nothing, they begin one at the pointer). Enter or a double click takes it; a drag beside
//   it begins anew.
// - The space bar changes between region and window mode. In window mode a click takes the window under the pointer,
//   and where there is none the screen.
// - Enter and a double click in region mode without a rectangle take the screen under the pointer. With Ctrl, Enter and
//   clicks take all screens.
// - Escape and the right button leave without a picture at any moment.
//
// Positions are pixels of the desktop's picture. The rectangle always lies within it.
#pragma once

#include "platform/linux/screencapture/CaptureScreens.h"

#include <chrono>
#include <optional>

namespace quenby {

enum class CaptureMode { region, window };
enum class CaptureKey { left, right, up, down, take, space, cancel };

struct CaptureModifiers {
    bool shift = false;   // ten pixels at once
    bool control = false; // resizes; takes all screens
    bool alt = false;     // resizes
};

// What there is to choose from.
struct CaptureGround {
    QRect desktop; // the whole picture
    QList<CaptureScreen> screens;
    QList<QRect> windows; // the topmost first
};

class CaptureSelection {
public:
    using Time = std::chrono::milliseconds; // of the display's own clock, from any moment

    // aiming: nothing is chosen yet; dragging: the button is down and spans the rectangle; moving: the button is down
    // and moves the rectangle; staying: the rectangle waits for Enter.
    enum class Phase { aiming, dragging, moving, staying, taken, cancelled };

    CaptureSelection(const CaptureGround& ground, const QPoint& pointer);

    void movePointer(const QPoint& position);
    void press(const QPoint& position, Time time);
    void release(const QPoint& position, Time time, const CaptureModifiers& modifiers);
    void pressKey(CaptureKey key, const CaptureModifiers& modifiers);
    void releaseKey(CaptureKey key);
    void cancel() { phase_ = Phase::cancelled; }

    Phase phase() const { return phase_; }
    CaptureMode mode() const { return mode_; }
    // Where the pointer has to be: keys may have moved it.
    QPoint pointer() const { return pointer_; }
    // What is marked on the screen: the region, or what a click would take. When taken, what was.
    std::optional<QRect> rectangle() const;
    bool hasEnded() const { return phase_ == Phase::taken || phase_ == Phase::cancelled; }
    const CaptureGround& ground() const { return ground_; }

private:
    void take(const QRect& rectangle);
    void takeWhatIsMeant(const CaptureModifiers& modifiers);
    QRect windowOrScreen() const;
    void followPointer(const QPoint& from);
    void changeMode();
    void arrow(const QPoint& direction, const CaptureModifiers& modifiers);
    void resize(const QPoint& by);
    void moveRectangle(const QPoint& by);
    bool isClick() const;

    CaptureGround ground_;
    Phase phase_ = Phase::aiming;
    CaptureMode mode_ = CaptureMode::region;
    QPoint pointer_;
    QPoint anchor_; // the corner of the region that does not follow the pointer
    QPoint corner_; // the other one
    bool isSpaceDown_ = false;
    bool isCarried_ = false;
    bool isTouchedUp_ = false; // keys moved it during the drag
    bool isPressed_ = false;
    QPoint pressedAt_;
    bool hasTravelled_ = false; // since the button went down
    bool isSecondClick_ = false;
    std::optional<Time> clickedAt_; // when the last click ended, and where
    QPoint clickedPosition_;
};

} // namespace quenby
