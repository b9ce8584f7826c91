#include "popover/window/ContainView.h"

#include "popover/window/CustomWindow.h"

#include <QRegion>

#include <cmath>

namespace quenby {
namespace {

// Everything but the lower corners. The edge is not smooth, which nobody sees: on both sides of it is the same ground.
QRegion roundBelow(const QRect& rect, int radius) {
    QRegion region(rect.adjusted(0, 0, 0, -radius));
    for (int line = 0; line < radius; ++line) {
        const double across = std::sqrt(radius * radius - (line + 0.5) * (line + 0.5));
        const int inset = radius - static_cast<int>(across);
        region += QRect(inset, rect.height() - radius + line, rect.width() - 2 * inset, 1);
    }
    return region;
}

} // namespace

ContainView::ContainView(QWidget* parent)
    : QWidget(parent) {}

void ContainView::setAtBottom(bool isAtBottom) {
    if (isAtBottom_ == isAtBottom)
        return;
    isAtBottom_ = isAtBottom;
    shape();
}

void ContainView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    shape();
}

void ContainView::shape() {
    if (isAtBottom_)
        setMask(roundBelow(rect(), customWindowCornerRadius - customWindowBorder));
    else
        clearMask();
}

} // namespace quenby
