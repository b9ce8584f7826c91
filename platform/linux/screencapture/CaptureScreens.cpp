#include "platform/linux/screencapture/CaptureScreens.h"

#include <algorithm>

namespace quenby {
namespace {

int distance(const QRect& rectangle, const QPoint& point) {
    const int x = std::max({rectangle.left() - point.x(), point.x() - rectangle.right(), 0});
    const int y = std::max({rectangle.top() - point.y(), point.y() - rectangle.bottom(), 0});
    return x + y;
}

} // namespace

const CaptureScreen& screenAt(const QList<CaptureScreen>& screens, const QPoint& pixel) {
    const auto isNearer = [&pixel](const CaptureScreen& a, const CaptureScreen& b) {
        return distance(a.pixels, pixel) < distance(b.pixels, pixel);
    };
    return *std::min_element(screens.cbegin(), screens.cend(), isNearer);
}

qreal scaleOf(const QList<CaptureScreen>& screens, const QRect& rectangle) {
    qreal scale = 1;
    for (const CaptureScreen& screen : screens)
        if (screen.pixels.intersects(rectangle))
            scale = std::max(scale, screen.scale);
    return scale;
}

} // namespace quenby
