#include "popover/changes/ShareButton.h"

#include <QPainter>

#include <algorithm>

namespace quenby {
namespace {

constexpr qreal grid = 24; // painted on a square of this side
constexpr qreal margin = 3;
constexpr qreal pressedSize = 0.9;

// A tray with an arrow that leaves it upward.
void paintSymbol(QPainter& painter) {
    painter.drawPolyline(QPolygonF({{8, 10.5}, {5.5, 10.5}, {5.5, 20.5}, {18.5, 20.5}, {18.5, 10.5}, {16, 10.5}}));
    painter.drawLine(QPointF(12, 3.5), QPointF(12, 14.5));
    painter.drawPolyline(QPolygonF({{8.5, 7}, {12, 3.5}, {15.5, 7}}));
}

} // namespace

ShareButton::ShareButton(QWidget* parent)
    : QAbstractButton(parent) {
    setFocusPolicy(Qt::NoFocus); // the row keeps the keyboard; Shift+Enter shares
    setAccessibleName(QStringLiteral("Share"));
    setToolTip(QStringLiteral("Share (Shift+Enter)"));
}

void ShareButton::setColour(const QColor& colour) {
    colour_ = colour;
    update();
}

void ShareButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal scale = (std::min(width(), height()) - 2 * margin) / grid * (isDown() ? pressedSize : 1);
    painter.translate(width() / 2.0, height() / 2.0);
    painter.scale(scale, scale);
    painter.translate(-grid / 2, -grid / 2);
    painter.setPen(QPen(isDown() ? colour_.darker() : colour_, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    paintSymbol(painter);
}

} // namespace quenby
