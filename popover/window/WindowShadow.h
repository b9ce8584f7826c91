// The soft shadow around a window without a frame, where the screen is composited.
#pragma once

#include <QMargins>
#include <QRectF>

class QPainter;

namespace quenby {

// The room that the shadow takes, in logical pixels. The light comes from above.
inline constexpr QMargins windowShadowMargins(16, 12, 16, 20);

// Around a window with round corners; nothing is painted where the window itself is.
void paintWindowShadow(QPainter& painter, const QRectF& window, qreal cornerRadius);

} // namespace quenby
