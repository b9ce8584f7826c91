#include "recording/review/MovieSlider.h"

#include "widgets/ProgressPainting.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace quenby {
namespace {

constexpr int knobSide = 12;
constexpr int barHeight = 4;
constexpr int usualHeight = 24; // easy to hit
constexpr int usualWidth = 96;
constexpr qreal focusWidth = 2;
constexpr float disabledStrength = 0.3F;

} // namespace

MovieSlider::MovieSlider(QWidget* parent)
    : QSlider(Qt::Horizontal, parent) {
    setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
}

QSize MovieSlider::sizeHint() const { return {usualWidth, usualHeight}; }
QSize MovieSlider::minimumSizeHint() const { return {4 * knobSide, usualHeight}; }

bool MovieSlider::isMirrored() const { return layoutDirection() == Qt::RightToLeft; }

int MovieSlider::knobPlace() const {
    return knobSide / 2 +
           QStyle::sliderPositionFromValue(minimum(), maximum(), sliderPosition(), width() - knobSide, isMirrored());
}

int MovieSlider::valueAt(int place) const {
    return QStyle::sliderValueFromPosition(minimum(), maximum(), place - knobSide / 2, width() - knobSide,
                                           isMirrored());
}

void MovieSlider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintedPlace_ = knobPlace();
    QColor fill = palette().color(isEnabled() ? QPalette::Highlight : QPalette::WindowText);
    if (!isEnabled())
        fill.setAlphaF(disabledStrength);
    const QRectF bar(0, (height() - barHeight) / 2.0, width(), barHeight);
    paintProgress(painter, bar, {palette().color(QPalette::WindowText), fill, layoutDirection()}, 0);
    QRectF done(bar);
    if (isMirrored())
        done.setLeft(paintedPlace_);
    else
        done.setRight(paintedPlace_);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(done, barHeight / 2.0, barHeight / 2.0);
    if (!isEnabled())
        return;
    QRectF knob(0, 0, knobSide, knobSide);
    knob.moveCenter({qreal(paintedPlace_), height() / 2.0});
    painter.drawEllipse(knob);
    if (!hasFocus())
        return;
    painter.setPen(QPen(palette().color(QPalette::WindowText), focusWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(knob.adjusted(-1, -1, 1, 1));
}

void MovieSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    setSliderDown(true);
    setSliderPosition(valueAt(qRound(event->position().x())));
}

void MovieSlider::mouseMoveEvent(QMouseEvent* event) {
    if (isSliderDown())
        setSliderPosition(valueAt(qRound(event->position().x())));
}

void MovieSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        setSliderDown(false);
}

// A movie moves on by less than a pixel thirty times a second.
void MovieSlider::sliderChange(SliderChange change) {
    if (change != SliderValueChange || knobPlace() != paintedPlace_)
        QSlider::sliderChange(change);
}

} // namespace quenby
