#include "oauth2/window/LoadingLine.h"

#include <QPainter>
#include <QTimerEvent>

namespace quenby {
namespace {

constexpr int lineHeight = 3;
constexpr int steps = 48; // from one end to the other
constexpr int stepMilliseconds = 30;
constexpr qreal pieceOfLine = 0.25;

} // namespace

LoadingLine::LoadingLine(QWidget* parent)
    : QProgressBar(parent) {
    setRange(0, 0);
    setTextVisible(false);
    setFixedHeight(lineHeight);
    setAccessibleName(tr("Loading"));
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true); // the page must not jump
    setSizePolicy(policy);
}

void LoadingLine::showEvent(QShowEvent* event) {
    QProgressBar::showEvent(event);
    step_ = 0;
    timer_.start(stepMilliseconds, this);
}

void LoadingLine::hideEvent(QHideEvent* event) {
    timer_.stop();
    QProgressBar::hideEvent(event);
}

void LoadingLine::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_.timerId())
        return QProgressBar::timerEvent(event);
    step_ = (step_ + 1) % steps;
    update();
}

void LoadingLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const qreal length = width() * pieceOfLine;
    qreal left = (width() + length) * step_ / steps - length;
    if (layoutDirection() == Qt::RightToLeft)
        left = width() - left - length;
    painter.fillRect(QRectF(left, 0, length, height()), palette().color(QPalette::Highlight));
}

} // namespace quenby
