// What the pointer looks like over a place of the overlay.
#pragma once

namespace quenby {

enum class SelectionCursor {
    cross,                 // a press begins a new rectangle
    openHand,              // a press takes hold of the rectangle
    diagonalUpwards,       // south-west to north-east
    diagonalDownwards,     // north-west to south-east
    resizeUpDownCursor,    // the upper and lower edges
    resizeLeftRightCursor, // the left and right edges
    unchanged,
};

} // namespace quenby
