// Where the start button stands: in the middle of a selection that is large enough, beside a smaller one. Coordinates
// as in SelectionHandles.h. Pure. Threads: any.
#pragma once

#include <QRectF>
#include <QSizeF>

namespace quenby {

inline constexpr QSizeF startButtonSize{121, 34};
inline constexpr qreal startButtonMargin = 16; // between it and the selection

struct StartButtonPlace {
    QRectF frame;
    bool isOverSelection = false; // on the bright screen: it needs a dark ground of its own

    friend bool operator==(const StartButtonPlace&, const StartButtonPlace&) = default;
};

// The width is the main screen's, by which the sides are chosen. The overlay is the screen that the button must be
// reached on: it always lies there whole, where there is room for it.
StartButtonPlace startButtonPlace(const QRectF& selection, qreal mainScreenWidth, const QSizeF& overlay);

} // namespace quenby
