#include "workspace/uploads/DropFrame.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr qreal frameWidth = 3;
constexpr qreal corner = 6;
constexpr float tintStrength = 0.12F;

} // namespace

DropFrame::DropFrame(QWidget* parent)
    : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropFrame::showEvent(QShowEvent* event) {
    setGeometry(parentWidget()->rect());
    raise();
    QWidget::showEvent(event);
}

void DropFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor line = palette().color(QPalette::Highlight);
    QColor tint = line;
    tint.setAlphaF(tintStrength);
    painter.setPen(QPen(line, frameWidth));
    painter.setBrush(tint);
    const qreal inset = frameWidth / 2 + 1;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), corner, corner);
}

} // namespace quenby
