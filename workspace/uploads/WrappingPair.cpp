#include "workspace/uploads/WrappingPair.h"

#include <QBoxLayout>
#include <QEvent>

#include <algorithm>

namespace quenby {
namespace {

constexpr int columnGap = 16;
constexpr int rowGap = 6;

} // namespace

WrappingPair::WrappingPair(QWidget* first, QWidget* second, QWidget* parent)
    : QWidget(parent)
    , first_(first)
    , second_(second)
    , layout_(new QBoxLayout(QBoxLayout::LeftToRight, this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(rowGap);
    layout_->addWidget(first, 1);
    layout_->addWidget(second);
}

QSize WrappingPair::minimumSizeHint() const {
    const int width = std::max(first_->minimumSizeHint().width(), second_->minimumSizeHint().width());
    return {width, layout_->minimumSize().height()};
}

bool WrappingPair::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest)
        fit();
    return QWidget::event(event);
}

void WrappingPair::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fit();
}

void WrappingPair::fit() {
    const int needed = first_->sizeHint().width() + columnGap + second_->sizeHint().width();
    layout_->setDirection(needed <= width() ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

} // namespace quenby
