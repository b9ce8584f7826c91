#include "workspace/share/ProgressIndicator.h"

#include <QPainter>
#include <QPen>

#include <chrono>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr int spokes = 12;
constexpr auto oneStep = 80ms;

} // namespace

ProgressIndicator::ProgressIndicator(QWidget* parent)
    : QWidget(parent) {
    setAutoFillBackground(true);
    setAccessibleName(QStringLiteral("Loading"));
}

void ProgressIndicator::startAnimation() { turning_.start(static_cast<int>(oneStep.count()), this); }

void ProgressIndicator::stopAnimation() { turning_.stop(); }

void ProgressIndicator::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    for (int spoke = 0; spoke < spokes; ++spoke) {
        // The newest is the strongest; the others fade behind it.
        const int age = (step_ - spoke + spokes) % spokes;
        QColor colour = palette().color(QPalette::WindowText);
        colour.setAlphaF(std::max(0.12, 0.75 - 0.075 * age));
        painter.setPen(QPen(colour, 2.6, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(360.0 / spokes * spoke);
        painter.drawLine(QPointF(0, -8), QPointF(0, -14));
        painter.restore();
    }
}

void ProgressIndicator::timerEvent(QTimerEvent*) {
    step_ = (step_ + 1) % spokes;
    update();
}

} // namespace quenby
