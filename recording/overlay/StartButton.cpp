#include "recording/overlay/StartButton.h"

#include "recording/selection/StartButtonPlace.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace quenby {
namespace {

// In points.
constexpr qreal cornerRadius = 16;
constexpr qreal borderWidth = 2;
constexpr qreal shadeWidth = 1;  // a dark line around the border, for white screens
constexpr qreal haloWidth = 3;   // of the text's dark edge, both sides together
constexpr qreal textPadding = 6; // from the box's sides

const QColor groundOnBrightScreen = QColor::fromRgbF(0, 0, 0, 0.3F);
const QColor shade = QColor::fromRgbF(0, 0, 0, 0.45F);
const QColor hoverGround = QColor::fromRgbF(1, 1, 1, 0.15F);
const QColor pressGround = QColor::fromRgbF(0, 0, 0, 0.35F);

// Bold, and as large as the system's unless it would not fit.
QFont fittingFont(const QFont& system, const QString& text, qreal width) {
    QFont font = system;
    font.setBold(true);
    const qreal needed = QFontMetricsF(font).horizontalAdvance(text);
    if (needed > width)
        font.setPixelSize(std::max(1, static_cast<int>(QFontInfo(font).pixelSize() * width / needed)));
    return font;
}

} // namespace

StartButton::StartButton(QWidget* parent)
    : QAbstractButton(parent) {
    setText(QStringLiteral(" Start Recording"));
    setAccessibleName(text().trimmed());
    setObjectName(QStringLiteral("buttonOk"));
    setFocusPolicy(Qt::NoFocus); // the overlay keeps the keyboard
    setAttribute(Qt::WA_Hover);
}

QSize StartButton::sizeHint() const { return startButtonSize.toSize(); }

void StartButton::setOnBrightScreen(bool isOnBrightScreen) {
    if (std::exchange(isOnBrightScreen_, isOnBrightScreen) != isOnBrightScreen)
        update();
}

void StartButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box(rect());
    const auto wholePixels = [ratio = devicePixelRatioF()](qreal width) {
        return std::max(1, qRound(width * ratio)) / ratio;
    };
    const auto ring = [&painter, &box](qreal from, qreal width, const QColor& colour) {
        const qreal inset = from + width / 2;
        painter.setPen(QPen(colour, width));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(box.adjusted(inset, inset, -inset, -inset), cornerRadius - inset, cornerRadius - inset);
    };
    const auto ground = [&painter, &box](const QColor& colour) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRoundedRect(box, cornerRadius, cornerRadius);
    };
    if (isOnBrightScreen_)
        ground(groundOnBrightScreen);
    if (isDown())
        ground(pressGround);
    else if (underMouse())
        ground(hoverGround);
    ring(0, wholePixels(shadeWidth), shade);
    ring(wholePixels(shadeWidth), wholePixels(borderWidth), Qt::white);

    const QFont font = fittingFont(painter.font(), text(), box.width() - 2 * textPadding);
    const QFontMetricsF metrics(font);
    const QPointF baseline((box.width() - metrics.horizontalAdvance(text())) / 2,
                           (box.height() + metrics.ascent() - metrics.descent()) / 2);
    QPainterPath halo;
    halo.addText(baseline, font, text());
    painter.strokePath(halo, QPen(shade, haloWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(baseline, text());
}

} // namespace quenby
