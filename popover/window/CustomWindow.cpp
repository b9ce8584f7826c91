#include "popover/window/CustomWindow.h"

#include "popover/window/WindowShadow.h"
#include "popover/window/X11WindowHints.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quenby {
namespace {

constexpr float lineStrength = 0.28F;

QMargins shadowOf(bool isComposited) { return isComposited ? windowShadowMargins : QMargins(); }

// About one logical pixel, and a whole number of the device's.
qreal hairline(qreal devicePixelRatio) { return std::max(1.0, std::floor(devicePixelRatio)) / devicePixelRatio; }

} // namespace

// A utility window: window managers keep it above the program's other windows and float it where they would tile.
CustomWindow::CustomWindow()
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    // Always, so that a compositor may come and go; where there is none, nothing translucent is painted.
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    takePalette();
    setComposited(false);
    connect(&buttons_, &X11ButtonWatch::pressed, this, &CustomWindow::pressedSomewhere);
    connect(&buttons_, &X11ButtonWatch::arrived, this, &CustomWindow::pressedHere);
    connect(&buttons_, &X11ButtonWatch::released, this, &CustomWindow::releasedSomewhere);
}

QRect CustomWindow::frame() const { return geometry().marginsRemoved(shadowOf(isComposited_)); }

void CustomWindow::setFrame(const QRect& frame) {
    const QRect whole = frame.marginsAdded(shadowOf(isComposited_));
    // In between it may have any size, so that place and size change at once.
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    setGeometry(whole);
    setFixedSize(whole.size());
}

void CustomWindow::showAt(const QRect& frame) {
    setComposited(isScreenComposited());
    setFrame(frame);
    winId();                                  // makes the native window, which is told some things before it is shown
    windowHandle()->installEventFilter(this); // only once, however often
    if (!isVisible()) {
        keepOffTaskBars(*windowHandle());
        tellShadow(*windowHandle(), shadowOf(isComposited_));
    }
    show();
    raise();
    activateWindow();
}

void CustomWindow::setComposited(bool isComposited) {
    isComposited_ = isComposited;
    setContentsMargins(shadowOf(isComposited) + customWindowBorder);
    update();
}

// A list's ground from edge to edge; everything in the window takes its colours from there.
void CustomWindow::takePalette() {
    const QPalette source = QApplication::palette();
    QPalette own;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        own.setColor(group, QPalette::Window, source.color(group, QPalette::Base));
        own.setColor(group, QPalette::WindowText, source.color(group, QPalette::Text));
    }
    setPalette(own);
}

void CustomWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
        takePalette(); // comes here again only if that changes something
}

bool CustomWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate)
        lookSoon();
    return QWidget::event(event);
}

bool CustomWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == windowHandle()) {
        if (event->type() == QEvent::MouseButtonPress)
            isPressed_ = true;
        else if (event->type() == QEvent::MouseButtonRelease && std::exchange(isPressed_, false))
            lookSoon();
        else if (event->type() == QEvent::DragEnter)
            isDraggedOver_ = true;
        else if (event->type() == QEvent::DragLeave || event->type() == QEvent::Drop)
            isDraggedOver_ = false;
    } else if (event->type() == QEvent::Hide) {
        watched->removeEventFilter(this);
        lookSoon();
    }
    return QWidget::eventFilter(watched, event);
}

// Not at once: the keys may only be on their way from one of the program's menus, and a click that brought another
// window to the front is still being handled.
void CustomWindow::lookSoon() { QMetaObject::invokeMethod(this, &CustomWindow::closeIfLeft, Qt::QueuedConnection); }

void CustomWindow::closeIfLeft() {
    // isActiveWindow() always holds for a utility window.
    if (!isVisible() || isPressedBeside_ || QApplication::activeWindow() == this)
        return;
    if (QWidget* const menu = QApplication::activePopupWidget())
        return menu->installEventFilter(this);
    const bool isInAClick = isPressed_ && QGuiApplication::mouseButtons() != Qt::NoButton;
    if (!isInAClick)
        close();
}

// One beside an open menu is the menu's end.
void CustomWindow::pressedSomewhere() { isPressedBeside_ = !QApplication::activePopupWidget(); }

// A press on a window of this program activates that one, which is enough. It may have done so before the press came.
void CustomWindow::pressedHere() {
    if (std::exchange(isPressedBeside_, false))
        lookSoon();
}

// What ends in the window was brought there. It has the keys from then on, so that it goes away as usual.
void CustomWindow::releasedSomewhere() {
    if (!std::exchange(isPressedBeside_, false))
        return;
    if (isDraggedOver_ || frame().contains(QCursor::pos()))
        activateWindow();
    else
        close();
}

void CustomWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    buttons_.start();
}

void CustomWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    buttons_.stop();
    isPressedBeside_ = false;
    isDraggedOver_ = false;
}

void CustomWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close))
        close();
    else
        QWidget::keyPressEvent(event);
}

// The shadow is not the window, though the desktop thinks so.
void CustomWindow::mousePressEvent(QMouseEvent* event) {
    if (!rect().marginsRemoved(shadowOf(isComposited_)).contains(event->position().toPoint()))
        close();
}

void CustomWindow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRectF seen = rect().marginsRemoved(shadowOf(isComposited_));
    constexpr int corner = customWindowCornerRadius;
    if (contentsRect().adjusted(0, corner, 0, -corner).contains(event->rect()))
        return painter.fillRect(event->rect(), palette().window());

    const qreal radius = isComposited_ ? corner : 0;
    if (isComposited_)
        paintWindowShadow(painter, seen, radius);
    const qreal line = hairline(devicePixelRatioF());
    const qreal innerRadius = std::max(0.0, radius - line);
    QPainterPath outline;
    outline.addRoundedRect(seen, radius, radius);
    QPainterPath inside;
    inside.addRoundedRect(seen.adjusted(line, line, -line, -line), innerRadius, innerRadius);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(lineStrength);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(outline, palette().window());
    painter.fillPath(outline.subtracted(inside), edge);
}

} // namespace quenby
