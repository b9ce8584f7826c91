// The choice of what to record, without anything that is shown: points of the pointer go in, the rectangle and what
// belongs to it come out. A click chooses the whole screen; a drag draws a rectangle, which can then be moved, pulled
// by its handles, or drawn anew.
//
// Coordinates: points of the overlay's own screen, the origin at its LOWER LEFT, y upwards; a view whose y grows
// downwards turns them over. So the rectangle's top() is its lower edge. Points outside of the screen are taken, those
// that are no numbers are not. Threads: the main thread.
#pragma once

#include "recording/selection/SelectionCursor.h"
#include "recording/selection/StartButtonPlace.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace quenby {

struct RecordingState;

enum class SelectionOutcome { nothing, fullScreenChosen, startChosen };

class SelectionModel {
public:
    // The state is shared by the models of all screens, and outlives them. A rectangle is kept within the main screen's
    // size, whichever screen the overlay covers.
    SelectionModel(RecordingState& state, const QSizeF& mainScreen);

    // Of the overlay; the main screen's before. Only the start button's place follows it.
    void setOverlaySize(const QSizeF& size);

    void press(const QPointF& point);
    void drag(const QPointF& point);
    SelectionOutcome release(const QPointF& point);
    // The pointer was taken away in the middle of a press: nothing is chosen.
    void cancelPress();

    const QRectF& selectionRect() const { return selectionRect_; }
    // The main screen's, on every screen: what a click chooses.
    QRectF fullScreen() const { return {QPointF(0, 0), mainScreen_}; }

    bool isLabelShown() const;
    bool isOutlineShown() const { return isDrawn_; } // and the handles
    bool isStartButtonShown() const { return isStartButtonShown_; }
    StartButtonPlace startButton() const;
    SelectionCursor cursorAt(const QPointF& point) const;

private:
    bool isOnStartButton(const QPointF& point) const;
    QRectF draggedTo(const QPointF& point) const;

    RecordingState& state_;
    const QSizeF mainScreen_;
    QSizeF overlay_;

    QRectF selectionRect_;
    bool isDrawn_ = false;        // there is a rectangle, be it empty
    bool tempCheck_ = false;      // a press that may still become a click
    bool isCroppingDone_ = false; // a press inside of the rectangle moves it
    bool isStartButtonShown_ = false;
    bool isLabelLeft_ = true; // no drag has begun here

    enum class Press { none, startButton, handle, ground };
    Press press_ = Press::none;
    int handle_ = 0; // the tag of the one that is held
    QPointF mouseDownPoint_;
    QPointF previousPoint_;
};

} // namespace quenby
