#include "recording/selection/SelectionModel.h"

#include "recording/RecordingState.h"
#include "recording/selection/SelectionClamp.h"
#include "recording/selection/SelectionHandles.h"

#include <cmath>

namespace quenby {
namespace {

bool isNumber(const QPointF& point) { return std::isfinite(point.x()) && std::isfinite(point.y()); }

} // namespace

SelectionModel::SelectionModel(RecordingState& state, const QSizeF& mainScreen)
    : state_(state)
    , mainScreen_(mainScreen)
    , overlay_(mainScreen) {}

void SelectionModel::setOverlaySize(const QSizeF& size) { overlay_ = size; }

void SelectionModel::press(const QPointF& point) {
    if (!isNumber(point))
        return;
    mouseDownPoint_ = previousPoint_ = point;
    handle_ = isDrawn_ ? handleAt(point, selectionRect_) : 0;
    if (handle_ != 0) {
        press_ = Press::handle;
        return;
    }
    if (isOnStartButton(point)) {
        press_ = Press::startButton;
        return;
    }
    press_ = Press::ground;
    tempCheck_ = !state_.isCropSelection;
    if (!selectionRect_.contains(point))
        isCroppingDone_ = false;
}

void SelectionModel::drag(const QPointF& point) {
    if (press_ == Press::none || press_ == Press::startButton || !isNumber(point) || point == previousPoint_)
        return;
    if (press_ == Press::handle) {
        selectionRect_ = resizedByHandle(handle_, selectionRect_, point - previousPoint_, mainScreen_);
    } else {
        if (!state_.isCropSelection && tempCheck_) {
            tempCheck_ = false;
            state_.isCropSelection = true;
        }
        if (isOnStartButton(point)) {
            previousPoint_ = point;
            return;
        }
        isLabelLeft_ = false;
        selectionRect_ = clampedSelection(draggedTo(point), selectionRect_, mainScreen_);
        isDrawn_ = true;
    }
    isStartButtonShown_ = false;
    previousPoint_ = point;
}

QRectF SelectionModel::draggedTo(const QPointF& point) const {
    return isCroppingDone_ ? selectionRect_.translated(point - previousPoint_)
                           : QRectF(mouseDownPoint_, point).normalized();
}

SelectionOutcome SelectionModel::release(const QPointF& point) {
    const Press press = std::exchange(press_, Press::none);
    handle_ = 0;
    if (press == Press::none)
        return SelectionOutcome::nothing;
    if (press == Press::startButton)
        return isOnStartButton(point) ? SelectionOutcome::startChosen : SelectionOutcome::nothing;
    if (std::exchange(tempCheck_, false) && !state_.isCropSelection) {
        state_.isRecordingVideo = true;
        state_.isRecordingVideoClicked = false;
        return SelectionOutcome::fullScreenChosen;
    }
    if (!isDrawn_) // a click here after a rectangle was begun on another screen
        return SelectionOutcome::nothing;
    if (press == Press::ground && isNumber(point) && !isOnStartButton(point))
        selectionRect_ =
            clampedSelection(selectionRect_.translated(point - previousPoint_), selectionRect_, mainScreen_);
    isCroppingDone_ = true;
    isStartButtonShown_ = true;
    return SelectionOutcome::nothing;
}

void SelectionModel::cancelPress() {
    press_ = Press::none;
    handle_ = 0;
    tempCheck_ = false;
    isCroppingDone_ = isStartButtonShown_ = isDrawn_;
}

bool SelectionModel::isLabelShown() const { return isLabelLeft_ && !state_.isCropSelection; }

bool SelectionModel::isOnStartButton(const QPointF& point) const {
    return isStartButtonShown_ && startButton().frame.contains(point);
}

StartButtonPlace SelectionModel::startButton() const {
    return startButtonPlace(selectionRect_, mainScreen_.width(), overlay_);
}

SelectionCursor SelectionModel::cursorAt(const QPointF& point) const {
    if (isDrawn_)
        if (const int tag = handleAt(point, selectionRect_))
            return cursorOfHandle(tag);
    if (isOnStartButton(point))
        return SelectionCursor::unchanged;
    return selectionRect_.contains(point) ? SelectionCursor::openHand : SelectionCursor::cross;
}

} // namespace quenby
