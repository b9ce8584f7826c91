// The screens as parts of the desktop's one picture. Positions and sizes are the picture's own pixels.
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>

namespace quenby {

struct CaptureScreen {
    QRect pixels;
    qreal scale = 1; // pixels for one point: how large what is drawn on this screen has to be

    friend bool operator==(const CaptureScreen&, const CaptureScreen&) = default;
};

// The one that shows this pixel, else the nearest. There has to be one at least.
const CaptureScreen& screenAt(const QList<CaptureScreen>& screens, const QPoint& pixel);

// The largest scale of the screens that show a part of the rectangle.
qreal scaleOf(const QList<CaptureScreen>& screens, const QRect& rectangle);

} // namespace quenby
