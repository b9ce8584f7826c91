#include "recording/session/SelectionTarget.h"

#include <algorithm>

namespace quenby {

QPointF lowerLeft(const Display& display, const Display& mainDisplay) {
    const QRectF frame(display.frame);
    const QRectF mainFrame(mainDisplay.frame);
    return {frame.left() - mainFrame.left(), mainFrame.bottom() - frame.bottom()};
}

std::optional<Display> displayUnder(const QRectF& selection, const QList<Display>& displays,
                                    const Display& mainDisplay) {
    const QPointF corner = selection.topLeft(); // y grows upwards: it is the lower one
    const auto isUnder = [&](const Display& display) {
        const QPointF inside = corner - lowerLeft(display, mainDisplay);
        return inside.x() >= 0 && inside.x() < display.frame.width() && inside.y() >= 0 &&
               inside.y() < display.frame.height();
    };
    const auto found = std::find_if(displays.begin(), displays.end(), isUnder);
    if (found == displays.end() || std::any_of(std::next(found), displays.end(), isUnder))
        return std::nullopt;
    return *found;
}

QRect selectedPixels(const QRectF& selection, const Display& display) {
    const QRectF downwards(selection.left(), display.frame.height() - selection.bottom(), selection.width(),
                           selection.height());
    // Each edge goes to the nearest pixel by itself: what lies side by side in points does so in pixels.
    const QPoint topLeft(qRound(downwards.left() * display.scale), qRound(downwards.top() * display.scale));
    const QPoint end(qRound(downwards.right() * display.scale), qRound(downwards.bottom() * display.scale));
    return QRect(topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y()))
        .intersected(QRect(QPoint(0, 0), display.pixels.size()));
}

} // namespace quenby
