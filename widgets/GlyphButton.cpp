#include "widgets/GlyphButton.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace quenby {
namespace {

constexpr int padding = 5;      // around the picture
constexpr int textDistance = 3; // from the picture
constexpr qreal cornerRadius = 5;
constexpr qreal focusWidth = 2;
// How much of the text's colour is in the ground.
constexpr float hoverStrength = 0.07F;
constexpr float checkedStrength = 0.12F;
constexpr float pressedStrength = 0.18F;

} // namespace

GlyphButton::GlyphButton(int glyphSide, QWidget* parent)
    : QToolButton(parent) {
    setIconSize({glyphSide, glyphSide});
    setAutoRaise(true); // the toolkit repaints it then when the pointer comes and goes
    setFocusPolicy(Qt::TabFocus);
}

QSize GlyphButton::textSize() const { return fontMetrics().size(Qt::TextShowMnemonic, text()); }

QSize GlyphButton::sizeHint() const {
    QSize content = iconSize();
    if (showsText())
        content = {std::max(content.width(), textSize().width()),
                   content.height() + textDistance + textSize().height()};
    return content.grownBy({padding, padding, padding, padding});
}

float GlyphButton::groundStrength() const {
    if (isDown())
        return pressedStrength;
    const float hover = isEnabled() && underMouse() ? hoverStrength : 0;
    return isChecked() ? checkedStrength + hover / 2 : hover;
}

void GlyphButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = palette().color(QPalette::WindowText);
    ground.setAlphaF(groundStrength());
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    QRect picture(QPoint(), iconSize());
    picture.moveCenter(rect().center());
    if (showsText()) {
        const int words = textSize().height();
        picture.translate(0, -(textDistance + words) / 2);
        const QRect line(0, picture.bottom() + 1 + textDistance, width(), words);
        style()->drawItemText(&painter, line, Qt::AlignCenter | Qt::TextShowMnemonic, palette(), isEnabled(), text(),
                              QPalette::WindowText);
    }
    icon().paint(&painter, picture, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    if (!hasFocus())
        return;
    const qreal inset = focusWidth / 2;
    painter.setPen(QPen(palette().color(QPalette::Highlight), focusWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
}

} // namespace quenby
