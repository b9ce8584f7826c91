#include "workspace/tabbar/BarButton.h"

#include <QPaintEvent>
#include <QPainter>

namespace quenby {

BarButton::BarButton(BarGlyph glyph, const QString& words, QWidget* bar)
    : QAbstractButton(bar)
    , glyph_(glyph) {
    setToolTip(words);
    setAccessibleName(words);
    setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard with the page
    setCursor(Qt::ArrowCursor);
    hide();
}

void BarButton::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void BarButton::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

void BarButton::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    TabPainter(painter, palette(), layoutDirection(), event->region())
        .paintButton(rect(), {glyph_, underMouse(), isDown(), hasFocus()});
}

} // namespace quenby
