#include "platform/linux/media/engine/capture/EvenCrop.h"

#include <cmath>

namespace quenby {
namespace {

struct Extent {
    int begin = 0;
    int length = 0;
};

Extent evenExtent(Extent extent, int limit) {
    if (extent.length % 2 == 0)
        return extent;
    if (extent.begin + extent.length < limit)
        return {extent.begin, extent.length + 1};
    if (extent.begin > 0)
        return {extent.begin - 1, extent.length + 1};
    return {extent.begin, extent.length - 1};
}

} // namespace

QRect evenCrop(const QRect& asked, const QSize& picture) {
    const QRect all(QPoint(0, 0), picture);
    const QRect crop = asked.isEmpty() ? all : asked & all;
    if (crop.isEmpty())
        return {};
    const Extent x = evenExtent({crop.x(), crop.width()}, picture.width());
    const Extent y = evenExtent({crop.y(), crop.height()}, picture.height());
    return {x.begin, y.begin, x.length, y.length};
}

QRect scaledCrop(const QRect& asked, const QSize& from, const QSize& to) {
    if (asked.isEmpty() || from.isEmpty() || from == to)
        return asked;
    const double x = double(to.width()) / from.width();
    const double y = double(to.height()) / from.height();
    // Edges are rounded, not sizes, so that neighbours stay neighbours.
    const QPoint begin(static_cast<int>(std::lround(asked.x() * x)), static_cast<int>(std::lround(asked.y() * y)));
    const QPoint end(static_cast<int>(std::lround((asked.x() + asked.width()) * x)),
                     static_cast<int>(std::lround((asked.y() + asked.height()) * y)));
    return {begin, QSize(end.x() - begin.x(), end.y() - begin.y())};
}

} // namespace quenby
