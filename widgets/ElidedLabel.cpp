#include "widgets/ElidedLabel.h"

#include "widgets/PlainToolTip.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace quenby {
namespace {

constexpr int fewestCharacters = 4; // with the ellipsis

} // namespace

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    alignToDirection();
}

QSize ElidedLabel::minimumSizeHint() const {
    const QSize hint = QLabel::minimumSizeHint();
    return wordWrap()
               ? hint
               : QSize(std::min(hint.width(), fewestCharacters * fontMetrics().averageCharWidth()), hint.height());
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && isCut()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainToolTip(text()), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        alignToDirection();
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
    if (!isCut())
        return QLabel::paintEvent(event);
    QPainter painter(this);
    const QRect room = contentsRect();
    painter.setLayoutDirection(text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(room, static_cast<int>(alignment() | Qt::AlignAbsolute) | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}

// The toolkit aligns a text by its own language, which would tear it away from what it stands beside.
void ElidedLabel::alignToDirection() {
    if (alignment().testFlag(Qt::AlignHCenter))
        return;
    const Qt::Alignment side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    setAlignment(side | Qt::AlignAbsolute | Qt::AlignVCenter);
}

bool ElidedLabel::isCut() const {
    return !wordWrap() && fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

} // namespace quenby
