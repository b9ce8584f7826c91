#include "workspace/window/UploadRowDelegate.h"

#include "widgets/ProgressPainting.h"
#include "workspace/window/UploadRows.h"

#include <QApplication>
#include <QPainter>

namespace quenby {
namespace {

constexpr int padding = 8; // above and below
constexpr int gap = 4;
constexpr int barHeight = 6;

// At its side of the line, in the direction of its own language: the numbers of an English text stay where they belong
// when the window runs from right to left.
void paintText(QPainter& painter, const QRect& rect, Qt::Alignment side, const QString& text) {
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.drawText(rect, static_cast<int>(side | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine, text);
}

} // namespace

void UploadRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QRect inner = option.rect.adjusted(0, padding, 0, -padding);
    const QFontMetrics& metrics = option.fontMetrics;
    const auto line = [&inner, &metrics](int number) {
        return QRect(inner.left(), inner.top() + number * (metrics.height() + gap), inner.width(), metrics.height());
    };
    const Qt::Alignment side = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
    painter->save();
    painter->setFont(option.font);
    painter->setPen(option.palette.color(QPalette::WindowText));
    paintText(*painter, line(0), side, metrics.elidedText(index.data().toString(), Qt::ElideMiddle, inner.width()));
    painter->setOpacity(0.72);
    paintText(*painter, line(1), side,
              metrics.elidedText(index.data(UploadRows::detailRole).toString(), Qt::ElideRight, inner.width()));
    painter->restore();

    paintProgress(
        *painter, QRect(inner.left(), line(2).top(), inner.width(), barHeight),
        {option.palette.color(QPalette::WindowText), option.palette.color(QPalette::Highlight), option.direction},
        index.data(UploadRows::percentRole).toInt());
}

QSize UploadRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {200, 2 * (option.fontMetrics.height() + gap) + barHeight + 2 * padding};
}

} // namespace quenby
