#include "platform/linux/screencapture/CaptureSelection.h"

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// In points. A hand that trembles while it clicks does not drag.
constexpr qreal clickTravel = 3;
constexpr auto doubleClickInterval = 400ms;
constexpr int farStep = 10; // pixels

QPoint clamped(const QPoint& point, const QRect& bounds) {
    return {std::clamp(point.x(), bounds.left(), bounds.right()), std::clamp(point.y(), bounds.top(), bounds.bottom())};
}

QRect spanned(const QPoint& a, const QPoint& b) {
    return {QPoint(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
            QPoint(std::max(a.x(), b.x()), std::max(a.y(), b.y()))};
}

// As much of the way as keeps the rectangle within the bounds.
QPoint allowedWay(const QRect& rectangle, const QPoint& way, const QRect& bounds) {
    return {std::clamp(way.x(), bounds.left() - rectangle.left(), bounds.right() - rectangle.right()),
            std::clamp(way.y(), bounds.top() - rectangle.top(), bounds.bottom() - rectangle.bottom())};
}

std::optional<QPoint> directionOf(CaptureKey key) {
    switch (key) {
    case CaptureKey::left:
        return QPoint(-1, 0);
    case CaptureKey::right:
        return QPoint(1, 0);
    case CaptureKey::up:
        return QPoint(0, -1);
    case CaptureKey::down:
        return QPoint(0, 1);
    default:
        return std::nullopt;
    }
}

} // namespace

CaptureSelection::CaptureSelection(const CaptureGround& ground, const QPoint& pointer)
    : ground_(ground)
    , pointer_(clamped(pointer, ground.desktop)) {}

std::optional<QRect> CaptureSelection::rectangle() const {
    switch (phase_) {
    case Phase::aiming:
        return mode_ == CaptureMode::window ? std::optional(windowOrScreen()) : std::nullopt;
    case Phase::cancelled:
        return std::nullopt;
    default:
        return spanned(anchor_, corner_);
    }
}

void CaptureSelection::movePointer(const QPoint& position) {
    if (hasEnded())
        return;
    const QPoint from = std::exchange(pointer_, clamped(position, ground_.desktop));
    const QPoint way = pointer_ - pressedAt_;
    hasTravelled_ = hasTravelled_ || std::max(qAbs(way.x()), qAbs(way.y())) >
                                         clickTravel * scaleOf(ground_.screens, QRect(pressedAt_, QSize(1, 1)));
    followPointer(from);
}

void CaptureSelection::followPointer(const QPoint& from) {
    if (phase_ == Phase::moving || (phase_ == Phase::dragging && isCarried_))
        moveRectangle(pointer_ - from);
    else if (phase_ == Phase::dragging)
        corner_ = pointer_;
}

void CaptureSelection::press(const QPoint& position, Time time) {
    if (hasEnded())
        return;
    movePointer(position);
    pressedAt_ = pointer_;
    isPressed_ = true;
    hasTravelled_ = false;
    isSecondClick_ = clickedAt_ && time - *clickedAt_ <= doubleClickInterval;
    if (isSecondClick_) {
        const QPoint way = pointer_ - clickedPosition_;
        isSecondClick_ =
            way.manhattanLength() <= 2 * clickTravel * scaleOf(ground_.screens, QRect(clickedPosition_, QSize(1, 1)));
    }
    if (mode_ == CaptureMode::window)
        return;
    if (phase_ == Phase::staying && spanned(anchor_, corner_).contains(pointer_)) {
        phase_ = Phase::moving;
        return;
    }
    phase_ = Phase::dragging;
    anchor_ = corner_ = pointer_;
    isCarried_ = false;
    isTouchedUp_ = false;
}

void CaptureSelection::release(const QPoint& position, Time time, const CaptureModifiers& modifiers) {
    if (hasEnded() || !std::exchange(isPressed_, false))
        return;
    movePointer(position);
    const bool isDoubleClick = isClick() && isSecondClick_;
    clickedAt_ = isClick() && !isDoubleClick ? std::optional(time) : std::nullopt;
    clickedPosition_ = pointer_;
    if (mode_ == CaptureMode::window)
        return takeWhatIsMeant(modifiers);
    if (phase_ == Phase::moving) {
        phase_ = Phase::staying;
        if (isDoubleClick)
            take(spanned(anchor_, corner_));
        return;
    }
    if (phase_ != Phase::dragging)
        return;
    if (isTouchedUp_) {
        phase_ = Phase::staying;
    } else if (!isClick()) {
        take(spanned(anchor_, corner_));
    } else {
        phase_ = Phase::aiming;
        if (isDoubleClick)
            takeWhatIsMeant(modifiers);
    }
}

void CaptureSelection::pressKey(CaptureKey key, const CaptureModifiers& modifiers) {
    if (hasEnded())
        return;
    if (const auto direction = directionOf(key))
        return arrow(*direction, modifiers);
    if (key == CaptureKey::cancel)
        return cancel();
    if (key == CaptureKey::take)
        return takeWhatIsMeant(modifiers);
    // A key that is held repeats itself.
    if (std::exchange(isSpaceDown_, true))
        return;
    if (phase_ == Phase::dragging)
        isCarried_ = true;
    else if (!isPressed_)
        changeMode();
}

void CaptureSelection::releaseKey(CaptureKey key) {
    if (key == CaptureKey::space)
        isCarried_ = isSpaceDown_ = false;
}

void CaptureSelection::changeMode() {
    mode_ = mode_ == CaptureMode::region ? CaptureMode::window : CaptureMode::region;
    phase_ = Phase::aiming;
    clickedAt_.reset();
}

void CaptureSelection::arrow(const QPoint& direction, const CaptureModifiers& modifiers) {
    const QPoint by = direction * (modifiers.shift ? farStep : 1);
    const bool resizes = modifiers.control || modifiers.alt;
    if (mode_ == CaptureMode::region && resizes && phase_ == Phase::aiming) {
        anchor_ = corner_ = pointer_;
        phase_ = Phase::staying;
    }
    if (phase_ == Phase::staying)
        return resizes ? resize(by) : moveRectangle(by);
    const QPoint from = std::exchange(pointer_, clamped(pointer_ + by, ground_.desktop));
    isTouchedUp_ = phase_ == Phase::dragging;
    followPointer(from);
}

// The upper left corner stays where it is.
void CaptureSelection::resize(const QPoint& by) {
    const QRect now = spanned(anchor_, corner_);
    anchor_ = now.topLeft();
    corner_ = clamped(now.bottomRight() + by, QRect(anchor_, ground_.desktop.bottomRight()));
}

void CaptureSelection::moveRectangle(const QPoint& by) {
    const QPoint way = allowedWay(spanned(anchor_, corner_), by, ground_.desktop);
    anchor_ += way;
    corner_ += way;
}

bool CaptureSelection::isClick() const { return !hasTravelled_; }

QRect CaptureSelection::windowOrScreen() const {
    const auto isMeant = [this](const QRect& window) { return window.contains(pointer_); };
    const auto window = std::find_if(ground_.windows.cbegin(), ground_.windows.cend(), isMeant);
    const QRect meant = window != ground_.windows.cend() ? *window : screenAt(ground_.screens, pointer_).pixels;
    return meant & ground_.desktop;
}

void CaptureSelection::takeWhatIsMeant(const CaptureModifiers& modifiers) {
    if (modifiers.control)
        take(ground_.desktop);
    else if (phase_ != Phase::aiming)
        take(spanned(anchor_, corner_));
    else if (mode_ == CaptureMode::window)
        take(windowOrScreen());
    else
        take(screenAt(ground_.screens, pointer_).pixels & ground_.desktop);
}

void CaptureSelection::take(const QRect& rectangle) {
    anchor_ = rectangle.topLeft();
    corner_ = rectangle.bottomRight();
    phase_ = Phase::taken;
}

} // namespace quenby
