#include "widgets/ActivityIndicator.h"

#include <QPainter>
#include <QTimerEvent>

namespace quenby {
namespace {

constexpr int spokes = 12;
constexpr int stepMilliseconds = 80;
constexpr qreal grid = 16; // painted on a square of this side

} // namespace

ActivityIndicator::ActivityIndicator(QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(QStringLiteral("Busy"));
}

void ActivityIndicator::setDiameter(int diameter) {
    diameter_ = diameter;
    updateGeometry();
    update();
}

void ActivityIndicator::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    timer_.start(stepMilliseconds, this);
}

void ActivityIndicator::hideEvent(QHideEvent* event) {
    timer_.stop();
    QWidget::hideEvent(event);
}

void ActivityIndicator::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    step_ = (step_ + 1) % spokes;
    update();
}

void ActivityIndicator::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    painter.scale(diameter_ / grid, diameter_ / grid);
    painter.rotate(step_ * 360.0 / spokes);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        QColor colour = palette().color(QPalette::WindowText);
        colour.setAlphaF((spoke + 1.0F) / spokes);
        painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -4), QPointF(0, -7));
        painter.rotate(360.0 / spokes);
    }
}

} // namespace quenby
