// A piece of the selection's dashed line that repeats without a seam, in pixels of the device. Painting the outline by
// copying it takes a small part of the time that stroking a thousand dashes takes. Threads: the main thread.
#pragma once

#include <QPixmap>

namespace quenby {

inline constexpr qreal dashPeriod = 10; // points, a dash and its gap
inline constexpr qreal outlineWidth = 1.2;

class DashTile {
public:
    // The tiles for so many pixels a point.
    explicit DashTile(qreal devicePixelRatio);

    qreal devicePixelRatio() const { return devicePixelRatio_; }
    // A dash begins at the tile's left or upper end; the line's middle is the tile's.
    const QPixmap& horizontal() const { return horizontal_; }
    const QPixmap& vertical() const { return vertical_; }
    // From the line's middle to the tile's long sides, in pixels.
    int halfThickness() const { return halfThickness_; }
    // How far it is from a dash to the next; a whole number only for most ratios.
    qreal period() const { return dashPeriod * devicePixelRatio_; }

private:
    qreal devicePixelRatio_;
    int halfThickness_;
    QPixmap horizontal_;
    QPixmap vertical_;
};

} // namespace quenby
