// Where the popover goes: a pure function of what is known. Sizes and places in logical pixels of the desktop.
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace quenby {

struct PopoverScreen {
    QRect geometry;
    QRect available; // without its panels
};

struct PlacementQuestion {
    QRect anchor;                 // the status item; empty when its place is not known
    QPoint pointer;               // where the pointer is; used when the anchor is empty and the pointer is on a screen
    QList<PopoverScreen> screens; // the first is the primary one; never empty
    QSize size;
    Qt::LayoutDirection direction = Qt::LeftToRight; // panels have their tray where lines end
};

struct PopoverPlace {
    QRect frame;
    // The edge away from the anchor, which moves when the popover becomes higher: the top or the bottom one.
    Qt::Edge movingEdge = Qt::BottomEdge;

    friend bool operator==(const PopoverPlace&, const PopoverPlace&) = default;
};

// Under the anchor, above it when it lies at the lower edge of its screen, beside it when it is in a panel at the left
// or right; else at the pointer, else in the corner of the primary screen where a tray would be. Always whole on one
// screen, made shorter when it would not fit.
PopoverPlace placePopover(const PlacementQuestion& question);

} // namespace quenby
