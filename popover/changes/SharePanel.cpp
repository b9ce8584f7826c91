#include "popover/changes/SharePanel.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr int softEdge = 16;

} // namespace

void SharePanel::setColour(const QColor& colour) {
    colour_ = colour;
    update();
}

void SharePanel::paintEvent(QPaintEvent*) {
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const int start = mirrored ? width() : 0;
    QLinearGradient softly(start, 0, mirrored ? start - softEdge : softEdge, 0);
    QColor nothing = colour_;
    nothing.setAlpha(0);
    softly.setColorAt(0, nothing);
    softly.setColorAt(1, colour_);
    QPainter(this).fillRect(rect(), softly);
}

} // namespace quenby
