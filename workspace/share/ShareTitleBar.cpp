#include "workspace/share/ShareTitleBar.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>
#include <QWindow>

namespace quenby {
namespace {

constexpr int barHeight = 34;
constexpr int buttonSize = 24;
constexpr float inactiveStrength = 0.7F; // still easy to read

// Painted, because not every icon theme has one.
QIcon crossIcon(const QColor& colour, qreal ratio) {
    QPixmap picture(QSize(16, 16) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(4, 4), QPointF(12, 12));
    painter.drawLine(QPointF(12, 4), QPointF(4, 12));
    return picture;
}

} // namespace

ShareTitleBar::ShareTitleBar(QWidget* parent)
    : QWidget(parent)
    , close_(new QToolButton(this)) {
    setFixedHeight(barHeight);
    close_->setAutoRaise(true);
    close_->setFixedSize(buttonSize, buttonSize);
    paintCross();
    close_->setToolTip(QStringLiteral("Close (Esc)"));
    close_->setAccessibleName(QStringLiteral("Close"));
    close_->setFocusPolicy(Qt::NoFocus); // the page keeps the keyboard; Escape closes
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, (barHeight - buttonSize) / 2, 0);
    layout->addStretch();
    layout->addWidget(close_);
    connect(close_, &QToolButton::clicked, this, &ShareTitleBar::closeRequested);
}

void ShareTitleBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        paintCross();
}

// Only a window that is shown knows its screen's resolution.
void ShareTitleBar::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    paintCross();
}

void ShareTitleBar::paintCross() {
    close_->setIcon(crossIcon(palette().color(QPalette::WindowText), devicePixelRatioF()));
}

void ShareTitleBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect room = rect().adjusted(barHeight, 0, -barHeight, 0);
    const QString title = fontMetrics().elidedText(window()->windowTitle(), Qt::ElideMiddle, room.width());
    QColor colour = palette().color(QPalette::WindowText);
    colour.setAlphaF(isActiveWindow() ? 1.0F : inactiveStrength);
    painter.setPen(colour);
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine, title);
}

void ShareTitleBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        window()->windowHandle()->startSystemMove();
}

} // namespace quenby
