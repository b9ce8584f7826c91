#include "popover/window/CustomButton.h"

#include "widgets/Glyphs.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>

namespace quenby {
namespace {

constexpr int side = 28;
constexpr qreal cornerRadius = 5;
constexpr float hoverStrength = 0.09F;
constexpr float downStrength = 0.18F;
constexpr float glyphStrength = 0.8F;
constexpr float disabledStrength = 0.35F;

QColor faded(QColor colour, float strength) {
    colour.setAlphaF(strength);
    return colour;
}

} // namespace

CustomButton::CustomButton(QPainterPath glyph, const QString& name, QWidget* parent)
    : QToolButton(parent)
    , glyph_(std::move(glyph)) {
    setFixedSize(side, side);
    setCursor(Qt::ArrowCursor);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setAccessibleName(name);
    setToolTip(name);
}

QSize CustomButton::sizeHint() const { return {side, side}; }

void CustomButton::stayDownWhileOpen(QWidget& menu) {
    menu_ = &menu;
    // Otherwise the toolkit would hand the press that closes the menu on to the button, which would open it again.
    menu.setAttribute(Qt::WA_NoMouseReplay);
    menu.installEventFilter(this);
    setDown(true);
}

bool CustomButton::eventFilter(QObject* watched, QEvent* event) {
    if (watched == menu_ && event->type() == QEvent::Hide) {
        menu_->removeEventFilter(this);
        menu_.clear();
        setDown(false);
    }
    return QToolButton::eventFilter(watched, event);
}

void CustomButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QToolButton::keyPressEvent(event);
}

void CustomButton::paintEvent(QPaintEvent*) {
    QStyleOption option;
    option.initFrom(this);
    const QColor ink = palette().color(QPalette::WindowText);
    const QRectF ground = QRectF(rect()).adjusted(1, 1, -1, -1);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isEnabled() && (isDown() || underMouse())) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(faded(ink, isDown() ? downStrength : hoverStrength));
        painter.drawRoundedRect(ground, cornerRadius, cornerRadius);
    }
    // Only for who goes by the keyboard.
    if (hasFocus() && option.state.testFlag(QStyle::State_KeyboardFocusChange)) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(ground, cornerRadius, cornerRadius);
    }
    painter.translate((width() - glyphGrid) / 2, (height() - glyphGrid) / 2);
    painter.fillPath(glyph_, faded(ink, isEnabled() ? glyphStrength : disabledStrength));
}

} // namespace quenby
