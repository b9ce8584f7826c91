#include "popover/window/PopoverPlacement.h"

#include "popover/window/PopoverHeight.h"

#include <algorithm>
#include <cstdint>

namespace quenby {
namespace {

// To the anchor, to panels and to the edges of the screen.
constexpr int distance = 4;

enum class Side { below, above, right, left };

// Rectangles with the edge behind their last pixel, so that sizes are differences.
struct Span {
    int begin;
    int end;

    int length() const { return end - begin; }
    // As long as wanted or as there is room, no nearer to either end than there is, as close to the wish as that lets.
    Span place(int wanted, int wish) const {
        const int size = std::min(wanted, length());
        const int from = std::clamp(wish, begin, end - size);
        return {from, from + size};
    }
};

Span horizontal(const QRect& rect) { return {rect.x(), rect.x() + rect.width()}; }
Span vertical(const QRect& rect) { return {rect.y(), rect.y() + rect.height()}; }
QRect rectOf(Span x, Span y) { return {x.begin, y.begin, x.length(), y.length()}; }

// 0 when they touch or overlap.
std::int64_t squaredDistance(const QRect& one, const QRect& other) {
    const auto gap = [](Span a, Span b) -> std::int64_t { return std::max({b.begin - a.end, a.begin - b.end, 0}); };
    const std::int64_t x = gap(horizontal(one), horizontal(other));
    const std::int64_t y = gap(vertical(one), vertical(other));
    return x * x + y * y;
}

std::int64_t sharedArea(const QRect& one, const QRect& other) {
    const QRect shared = one & other;
    return std::int64_t{shared.width()} * shared.height();
}

// The screen that has most of the anchor, else the nearest one.
const PopoverScreen& screenOf(const QRect& anchor, const QList<PopoverScreen>& screens) {
    return *std::max_element(
        screens.begin(), screens.end(), [&anchor](const PopoverScreen& one, const PopoverScreen& other) {
            const std::int64_t here = sharedArea(anchor, one.geometry);
            const std::int64_t there = sharedArea(anchor, other.geometry);
            return here != there ? here < there
                                 : squaredDistance(anchor, one.geometry) > squaredDistance(anchor, other.geometry);
        });
}

// The part of the anchor that can be seen; of one that lies outside, the place on the screen that is nearest to it.
QRect seenOn(const QRect& screen, const QRect& anchor) {
    return rectOf(horizontal(screen).place(1, anchor.x()), vertical(screen).place(1, anchor.y()))
        .united(rectOf(horizontal(screen).place(1, anchor.right()), vertical(screen).place(1, anchor.bottom())));
}

QRect roomOf(const PopoverScreen& screen) {
    return screen.available.adjusted(distance, distance, -distance, -distance);
}

// What lies outside of the available area is in a panel, which tells the side. On the area itself (a panel that hides,
// a strip), the popover goes below when it can.
Side sideOf(const QRect& anchor, const PopoverScreen& screen, int height) {
    const QPoint centre = anchor.center();
    const QRect& area = screen.available;
    if (centre.y() > area.bottom())
        return Side::above;
    if (centre.y() < area.top())
        return Side::below;
    if (centre.x() < area.left())
        return Side::right;
    if (centre.x() > area.right())
        return Side::left;
    const Span room = vertical(roomOf(screen));
    const int below = room.end - (vertical(anchor).end + distance);
    const int above = vertical(anchor).begin - distance - room.begin;
    return below >= height || below >= above ? Side::below : Side::above;
}

PopoverPlace hungFrom(const QRect& anchor, const PopoverScreen& screen, QSize size) {
    const QRect room = roomOf(screen);
    const Side side = sideOf(anchor, screen, size.height());
    const Span tall = vertical(room);
    if (side == Side::left || side == Side::right) {
        const int x = side == Side::right ? horizontal(anchor).end + distance
                                          : horizontal(anchor).begin - distance - size.width();
        const bool isLow = anchor.center().y() > screen.geometry.center().y();
        const int y = isLow ? vertical(anchor).end - size.height() : anchor.y();
        return {rectOf(horizontal(room).place(size.width(), x), tall.place(size.height(), y)),
                isLow ? Qt::TopEdge : Qt::BottomEdge};
    }
    const int middle = anchor.x() + anchor.width() / 2;
    const Span across = horizontal(room).place(size.width(), middle - size.width() / 2);
    Span free = tall; // on this side of the anchor
    if (side == Side::below)
        free.begin = std::max(free.begin, vertical(anchor).end + distance);
    else
        free.end = std::min(free.end, vertical(anchor).begin - distance);
    // Rather over the anchor than too low to be of use.
    if (free.length() < std::min(size.height(), leastPopoverHeight))
        free = tall;
    const int y = side == Side::below ? free.begin : free.end - size.height();
    return {rectOf(across, free.place(size.height(), y)), side == Side::below ? Qt::BottomEdge : Qt::TopEdge};
}

// Where lines end, along the edge that has a panel: the upper one when neither or both have.
PopoverPlace inCorner(const PopoverScreen& screen, QSize size, Qt::LayoutDirection direction) {
    const QRect room = roomOf(screen);
    const bool isLow =
        screen.available.bottom() < screen.geometry.bottom() && screen.available.top() <= screen.geometry.top();
    const int x = direction == Qt::LeftToRight ? horizontal(room).end - size.width() : horizontal(room).begin;
    const int y = isLow ? vertical(room).end - size.height() : vertical(room).begin;
    return {rectOf(horizontal(room).place(size.width(), x), vertical(room).place(size.height(), y)),
            isLow ? Qt::TopEdge : Qt::BottomEdge};
}

} // namespace

PopoverPlace placePopover(const PlacementQuestion& question) {
    const auto hang = [&question](const QRect& anchor) {
        const PopoverScreen& screen = screenOf(anchor, question.screens);
        return hungFrom(seenOn(screen.geometry, anchor), screen, question.size);
    };
    if (!question.anchor.isEmpty())
        return hang(question.anchor);
    for (const PopoverScreen& screen : question.screens) {
        if (screen.geometry.contains(question.pointer))
            return hang(QRect(question.pointer, QSize(1, 1)));
    }
    return inCorner(question.screens.constFirst(), question.size, question.direction);
}

} // namespace quenby
