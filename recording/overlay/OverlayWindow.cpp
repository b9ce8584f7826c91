#include "recording/overlay/OverlayWindow.h"

#include "recording/overlay/DrawMouseBoxView.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QWindow>

namespace quenby {
namespace {

bool isOnWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

// A window manager would keep it off the panels, or move it where it thinks best.
Qt::WindowFlags overlayFlags() {
    const Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
    return isOnWayland() ? flags : flags | Qt::BypassWindowManagerHint;
}

} // namespace

OverlayWindow::OverlayWindow(const Display& display, const Display& mainDisplay, const Displays& displays,
                             RecordingState& state)
    : QWidget(nullptr, overlayFlags())
    , display_(display)
    , displays_(displays)
    , view_(new DrawMouseBoxView(state, QSizeF(mainDisplay.frame.size()), this)) {
    setObjectName(QStringLiteral("OverlayWindow"));
    setWindowTitle(QStringLiteral("Quenby Recording Area"));
    setAttribute(Qt::WA_QuitOnClose, false);
    setFocusProxy(view_);
    // Later, so that the window may be deleted then.
    connect(view_, &DrawMouseBoxView::didSelectRect, this, &OverlayWindow::didSelectRect, Qt::QueuedConnection);
    connect(view_, &DrawMouseBoxView::abandoned, this, &OverlayWindow::abandoned, Qt::QueuedConnection);
    connect(view_, &DrawMouseBoxView::pressed, this, &OverlayWindow::takeLostKeyboard);
}

OverlayWindow::~OverlayWindow() = default;

void OverlayWindow::present(bool takesKeyboard) {
    const bool isTranslucent = displays_.isComposited();
    setAttribute(Qt::WA_TranslucentBackground, isTranslucent);
    setAttribute(Qt::WA_ShowWithoutActivating, !takesKeyboard);
    if (QScreen* const itsScreen = displays_.screen(display_))
        setScreen(itsScreen);
    setGeometry(display_.frame);
    view_->resize(display_.frame.size());
    view_->setPicture(isTranslucent ? QImage() : displays_.picture(display_));
    if (isOnWayland())
        showFullScreen();
    else
        show();
    raise();
    view_->setFocus(Qt::OtherFocusReason);
    if (takesKeyboard)
        keyboard_.take(*windowHandle());
}

void OverlayWindow::takeLostKeyboard() {
    if (!QGuiApplication::focusWindow())
        keyboard_.take(*windowHandle());
}

void OverlayWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    view_->setGeometry(rect());
}

void OverlayWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    keyboard_.giveBack();
}

void OverlayWindow::closeEvent(QCloseEvent* event) {
    if (!event->spontaneous())
        return QWidget::closeEvent(event);
    event->ignore();
    QMetaObject::invokeMethod(this, &OverlayWindow::abandoned, Qt::QueuedConnection);
}

} // namespace quenby
