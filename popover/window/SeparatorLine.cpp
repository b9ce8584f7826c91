#include "popover/window/SeparatorLine.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr float strength = 0.14F;

} // namespace

SeparatorLine::SeparatorLine(QWidget* parent)
    : QWidget(parent) {
    setFixedHeight(1);
}

void SeparatorLine::paintEvent(QPaintEvent*) {
    QColor colour = palette().color(QPalette::WindowText);
    colour.setAlphaF(strength);
    QPainter(this).fillRect(rect(), colour);
}

} // namespace quenby
