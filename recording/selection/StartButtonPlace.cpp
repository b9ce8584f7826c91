#include "recording/selection/StartButtonPlace.h"

#include "recording/selection/SelectionHandles.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr qreal width = startButtonSize.width();
constexpr qreal height = startButtonSize.height();
constexpr qreal margin = startButtonMargin;

QRectF onTheLeft(const QRectF& selection) {
    return {QPointF(selection.left() - width - margin, selection.center().y() - height / 2), startButtonSize};
}
QRectF onTheRight(const QRectF& selection) {
    return {QPointF(selection.right() + margin, selection.center().y() - height / 2), startButtonSize};
}
QRectF below(const QRectF& selection) {
    return {QPointF(selection.center().x() - width / 2, selection.top() - height - margin), startButtonSize};
}
QRectF above(const QRectF& selection) {
    return {QPointF(selection.center().x() - width / 2, selection.bottom() + margin), startButtonSize};
}

QRectF beside(const QRectF& selection, qreal mainScreenWidth) {
    const bool hasRoomBelow = selection.top() - (height + margin) > 0;
    const bool hasRoomOnTheLeft = selection.left() - width - margin >= 0;
    const bool hasNoRoomOnTheRight = selection.right() + width + margin > mainScreenWidth;
    if (!hasRoomOnTheLeft)
        return onTheRight(selection);
    if (hasNoRoomOnTheRight)
        return onTheLeft(selection);
    return hasRoomBelow ? below(selection) : onTheRight(selection);
}

QRectF pushedOnto(const QSizeF& overlay, QRectF frame) {
    frame.moveLeft(std::clamp(frame.left(), 0.0, std::max(0.0, overlay.width() - width)));
    frame.moveTop(std::clamp(frame.top(), 0.0, std::max(0.0, overlay.height() - height)));
    return frame;
}

} // namespace

StartButtonPlace startButtonPlace(const QRectF& selection, qreal mainScreenWidth, const QSizeF& overlay) {
    const auto isOver = [&selection](const QRectF& frame) { return frame.intersects(selection); };
    if (selection.height() > height + 2 * margin && selection.width() > width + 2 * margin) {
        const QRectF inside(selection.center() - QPointF(width, height) / 2, startButtonSize);
        const QRectF reached = pushedOnto(overlay, inside);
        return {reached, isOver(reached)};
    }
    // The rules choose a side even where none has room: a low rectangle as wide as the screen. Above or below it there
    // is room then, clear of its handles.
    const qreal handles = handleSide / 2;
    const QRectF withHandles = selection.adjusted(-handles, -handles, handles, handles);
    const QRectF chosen = pushedOnto(overlay, beside(selection, mainScreenWidth));
    for (const QRectF& frame : {chosen, pushedOnto(overlay, below(selection)), pushedOnto(overlay, above(selection))})
        if (!frame.intersects(withHandles))
            return {frame, false};
    return {chosen, isOver(chosen)};
}

} // namespace quenby
