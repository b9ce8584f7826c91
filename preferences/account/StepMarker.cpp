#include "preferences/account/StepMarker.h"

#include "widgets/ActivityIndicator.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr int side = 24; // logical pixels
constexpr qreal stroke = 2;
constexpr float groundStrength = 0.13F;
// Dark enough for white on them, and to be seen on light and dark grounds.
constexpr QColor fineColour(0x2f, 0x8a, 0x5b);
constexpr QColor wrongColour(0xc4, 0x45, 0x40);

QPolygonF tick() { return {{7, 12.5}, {10.5, 16}, {17, 8.5}}; }

} // namespace

StepMarker::StepMarker(int number, QWidget* parent)
    : QWidget(parent)
    , number_(number)
    , wheel_(new ActivityIndicator(this)) {
    setFixedSize(sizeHint());
    wheel_->setGeometry(rect());
    wheel_->hide();
}

void StepMarker::setState(StepView::State state) {
    state_ = state;
    wheel_->setVisible(state == StepView::State::checking);
    update();
}

QSize StepMarker::sizeHint() const { return {side, side}; }

void StepMarker::paintEvent(QPaintEvent*) {
    if (state_ == StepView::State::checking)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isWaiting = state_ == StepView::State::waiting;
    QColor ground = palette().color(QPalette::WindowText);
    ground.setAlphaF(groundStrength);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isWaiting ? ground : state_ == StepView::State::fine ? fineColour : wrongColour);
    painter.drawEllipse(rect());
    if (isWaiting) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter, QString::number(number_));
        return;
    }
    painter.setPen(QPen(Qt::white, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    if (state_ == StepView::State::fine) {
        painter.drawPolyline(tick());
    } else {
        painter.drawLine(QPointF(8, 8), QPointF(16, 16));
        painter.drawLine(QPointF(16, 8), QPointF(8, 16));
    }
}

} // namespace quenby
