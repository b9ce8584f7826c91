#include "popover/window/ctmView.h"

#include "popover/window/CustomWindow.h"
#include "popover/window/GripCursor.h"
#include "popover/window/PopoverHeight.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

constexpr int gripHeight = 11;
constexpr QSizeF handle(36, 3);
constexpr float handleStrength = 0.28F;
constexpr float hoveredStrength = 0.55F;

} // namespace

ctmView::ctmView(CustomWindow& window, Defaults& defaults)
    : QWidget(&window)
    , window_(window)
    , defaults_(defaults) {
    setFixedHeight(gripHeight);
    setAccessibleName(QStringLiteral("Height"));
}

QSize ctmView::sizeHint() const { return {handle.toSize().width(), gripHeight}; }

void ctmView::enterEvent(QEnterEvent*) {
    showWays();
    update();
}

void ctmView::leaveEvent(QEvent*) {
    unsetCursor();
    update();
}

void ctmView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    isDragged_ = true;
    startPoint_ = event->globalPosition();
    startFrame_ = window_.frame();
}

void ctmView::mouseMoveEvent(QMouseEvent* event) {
    if (!isDragged_)
        return;
    const int down = static_cast<int>(std::lround(event->globalPosition().y() - startPoint_.y()));
    const int requested = startFrame_.height() + (movingEdge_ == Qt::BottomEdge ? down : -down);
    setWindowHeight(std::clamp(requested, leastPopoverHeight, greatestPopoverHeight));
}

void ctmView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        isDragged_ = false;
}

void ctmView::setWindowHeight(int height) {
    if (window_.frame().height() == height)
        return;
    keepPopoverHeight(defaults_, height);
    // From where it began: what the window system has told of the place in between may be old.
    QRect frame = startFrame_;
    if (movingEdge_ == Qt::BottomEdge)
        frame.setHeight(height);
    else
        frame.setTop(frame.bottom() + 1 - height);
    window_.setFrame(frame);
    showWays();
}

void ctmView::showWays() { setCursor(gripCursor(gripWay(window_.frame().height(), movingEdge_), devicePixelRatioF())); }

void ctmView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ink = palette().color(QPalette::WindowText);
    ink.setAlphaF(underMouse() || isDragged_ ? hoveredStrength : handleStrength);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    const QRectF bar(QPointF((width() - handle.width()) / 2, (height() - handle.height()) / 2), handle);
    painter.drawRoundedRect(bar, handle.height() / 2, handle.height() / 2);
}

} // namespace quenby
