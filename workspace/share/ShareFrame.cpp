#include "workspace/share/ShareFrame.h"

#include <algorithm>

namespace quenby {

QRect shareFrame(const QRect& frame, const QRect& screen, int dialogHeight) {
    const int height = dialogHeight + shareWindowMargin;
    const int lowerGap = (screen.height() - dialogHeight + shareWindowMargin) / 2;
    const int top = screen.y() + screen.height() - lowerGap - height;
    return {frame.x(), top, frame.width(), height};
}

QRect keptInside(const QRect& frame, const QRect& area) {
    const int height = std::min(frame.height(), area.height());
    const int lowest = area.y() + area.height() - height;
    return {frame.x(), std::clamp(frame.y(), area.y(), lowest), frame.width(), height};
}

} // namespace quenby
