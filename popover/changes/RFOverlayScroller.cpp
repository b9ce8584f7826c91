#include "popover/changes/RFOverlayScroller.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto idleTime = 1500ms;
constexpr int fadeInMilliseconds = 100;
constexpr int fadeOutMilliseconds = 300;
constexpr int knobWidth = 6;
constexpr int margin = 3;
constexpr int shortestKnob = 30;
constexpr float restingStrength = 0.4F;
constexpr float touchedStrength = 0.6F;

} // namespace

RFOverlayScroller::RFOverlayScroller(QScrollBar& bar, std::shared_ptr<TimeSource> timeSource, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent)
    , timeSource_(std::move(timeSource)) {
    setCursor(Qt::ArrowCursor);
    setSingleStep(bar.singleStep());
    setRange(bar.minimum(), bar.maximum());
    setValue(bar.value());
    connect(&bar, &QScrollBar::rangeChanged, this, &QScrollBar::setRange);
    connect(&bar, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, &bar, &QScrollBar::setValue);
    connect(&fade_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& alpha) { setAlphaValue(alpha.toDouble()); });
    setVisible(maximum() > minimum());
}

RFOverlayScroller::~RFOverlayScroller() = default;

QRect RFOverlayScroller::knob() const {
    const int track = height() - 2 * margin;
    const int range = maximum() - minimum();
    const int length =
        std::clamp(track * height() / std::max(height() + range, 1), std::min(shortestKnob, track), track);
    const int top = range > 0 ? (track - length) * (value() - minimum()) / range : 0;
    const QRect whole(width() - margin - knobWidth, margin + top, knobWidth, length);
    return QStyle::visualRect(layoutDirection(), rect(), whole);
}

void RFOverlayScroller::sliderChange(SliderChange change) {
    QScrollBar::sliderChange(change);
    if (change == SliderRangeChange) {
        setVisible(maximum() > minimum());
    } else if (change == SliderValueChange) {
        fadeIn();
        fadeOutLater();
    }
}

void RFOverlayScroller::fadeIn() {
    fadingOut_.reset();
    if (fade_.state() == QAbstractAnimation::Running ? fade_.endValue() == 1.0 : alphaValue_ == 1)
        return;
    fade_.stop();
    fade_.setStartValue(alphaValue_);
    fade_.setEndValue(1.0);
    fade_.setDuration(fadeInMilliseconds);
    fade_.start();
}

void RFOverlayScroller::fadeOutLater() {
    if (!grip_ && !underMouse() && isVisible())
        fadingOut_ = timeSource_->startTimer(idleTime, [this] { fadeOut(); });
}

void RFOverlayScroller::fadeOut() {
    fadingOut_.reset();
    fade_.stop();
    fade_.setStartValue(alphaValue_);
    fade_.setEndValue(0.0);
    fade_.setDuration(fadeOutMilliseconds);
    fade_.start();
}

void RFOverlayScroller::setAlphaValue(qreal alpha) {
    if (alpha == alphaValue_)
        return;
    alphaValue_ = alpha;
    update(knob());
}

void RFOverlayScroller::enterEvent(QEnterEvent*) { fadeIn(); }

void RFOverlayScroller::leaveEvent(QEvent*) {
    if (!grip_)
        fadeOut();
}

void RFOverlayScroller::mouseMoveEvent(QMouseEvent* event) {
    fadingOut_.reset();
    fade_.stop();
    setAlphaValue(1);
    const int room = height() - 2 * margin - knob().height();
    if (!grip_ || room <= 0)
        return;
    const int top = std::clamp(event->position().toPoint().y() - *grip_ - margin, 0, room);
    setValue(minimum() + qRound(static_cast<qreal>(top) * (maximum() - minimum()) / room));
}

void RFOverlayScroller::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    const int y = event->position().toPoint().y();
    const QRect held = knob();
    if (y < held.top()) {
        triggerAction(SliderPageStepSub);
    } else if (y > held.bottom()) {
        triggerAction(SliderPageStepAdd);
    } else {
        grip_ = y - held.top();
        update(held);
    }
}

void RFOverlayScroller::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !grip_)
        return;
    grip_.reset();
    update(knob());
    if (!rect().contains(event->position().toPoint()))
        fadeOut();
}

void RFOverlayScroller::contextMenuEvent(QContextMenuEvent* event) { event->ignore(); }

void RFOverlayScroller::resizeEvent(QResizeEvent* event) {
    QScrollBar::resizeEvent(event);
    setPageStep(height());
}

void RFOverlayScroller::hideEvent(QHideEvent* event) {
    QScrollBar::hideEvent(event);
    grip_.reset();
    fadingOut_.reset();
    fade_.stop();
    alphaValue_ = 0;
}

void RFOverlayScroller::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(alphaValue_);
    QColor colour = palette().color(QPalette::Text);
    colour.setAlphaF(grip_ || underMouse() ? touchedStrength : restingStrength);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRoundedRect(knob(), knobWidth / 2.0, knobWidth / 2.0);
}

} // namespace quenby
