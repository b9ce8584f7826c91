#include "platform/linux/screencapture/CapturePlacement.h"

#include <algorithm>

namespace quenby {
namespace {

// A place that is too large for the screen is cut off at the far edges.
QRect movedInto(const QRect& screen, QRect place) {
    place.moveRight(std::min(place.right(), screen.right()));
    place.moveBottom(std::min(place.bottom(), screen.bottom()));
    place.moveLeft(std::max(place.left(), screen.left()));
    place.moveTop(std::max(place.top(), screen.top()));
    return place & screen;
}

} // namespace

QRect magnifierPlace(const QSize& size, const QPoint& pointer, int distance, const QRect& screen) {
    QRect place(pointer + QPoint(distance, distance), size);
    if (place.right() > screen.right())
        place.moveRight(pointer.x() - distance);
    if (place.bottom() > screen.bottom())
        place.moveBottom(pointer.y() - distance);
    return movedInto(screen, place);
}

QRect readoutPlace(const QSize& size, const QRect& rectangle, int distance, const QRect& screen, const QRect& avoided) {
    const QRect seen = rectangle & screen;
    const int left = seen.left();
    const int right = seen.right() + 1 - size.width();
    const int above = seen.top() - distance - size.height();
    const int below = seen.bottom() + 1 + distance;
    const QPoint inside(distance, distance);
    const QList<QRect> places{
        {QPoint(left, above), size},
        {QPoint(left, below), size},
        {QPoint(right, above), size},
        {QPoint(right, below), size},
        {QPoint(left - distance - size.width(), seen.top()), size},
        {QPoint(seen.right() + 1 + distance, seen.top()), size},
        {seen.topLeft() + inside, size},
        {seen.bottomLeft() + QPoint(distance, 1 - distance - size.height()), size},
        // One side of what is avoided has room.
        {QPoint(avoided.left(), avoided.top() - distance - size.height()), size},
        {QPoint(avoided.left(), avoided.bottom() + 1 + distance), size},
    };
    const auto isGood = [&](const QRect& place) { return screen.contains(place) && !place.intersects(avoided); };
    const auto found = std::find_if(places.cbegin(), places.cend(), isGood);
    return movedInto(screen, found != places.cend() ? *found : places.first());
}

QRect hintPlace(const QSize& size, int distance, const QRect& screen, const QList<QRect>& avoided) {
    const int x = screen.left() + (screen.width() - size.width()) / 2;
    const QRect low = movedInto(screen, QRect(QPoint(x, screen.bottom() + 1 - distance - size.height()), size));
    const QRect high = movedInto(screen, QRect(QPoint(x, screen.top() + distance), size));
    const auto isInTheWay = [&low](const QRect& other) { return low.intersects(other); };
    return std::any_of(avoided.cbegin(), avoided.cend(), isInTheWay) ? high : low;
}

} // namespace quenby
