#include "preferences/about/LinkButton.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace quenby {
namespace {

constexpr int padding = 4; // around the text; the focus frame stands in it

} // namespace

LinkButton::LinkButton(const QString& text, QWidget* parent)
    : QPushButton(text, parent) {
    setAutoDefault(true); // so that Return presses it, too
    setCursor(Qt::PointingHandCursor);
}

QSize LinkButton::sizeHint() const {
    return fontMetrics().size(Qt::TextShowMnemonic, text()).grownBy({padding, padding, padding, padding});
}

void LinkButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QFont underlined = font();
    underlined.setUnderline(true);
    painter.setFont(underlined);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled,
                                   isDown() ? QPalette::WindowText : QPalette::Link));
    // The whole text is underlined as it is; a mnemonic's own line would not be seen.
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextHideMnemonic, text());
    if (!hasFocus())
        return;
    QStyleOptionFocusRect frame;
    frame.initFrom(this);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
}

} // namespace quenby
