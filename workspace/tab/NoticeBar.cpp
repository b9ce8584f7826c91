#include "workspace/tab/NoticeBar.h"

#include "widgets/ElidedLabel.h"
#include "widgets/Glyphs.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

namespace quenby {
namespace {

// How much of the highlight's colour is in the ground: enough to be seen, too little to hurt the text's contrast.
constexpr float tintStrength = 0.14F;

} // namespace

NoticeBar::NoticeBar(const QString& text, QWidget* parent)
    : QWidget(parent)
    , text_(new ElidedLabel(this))
    , buttons_(new QHBoxLayout)
    , close_(new QToolButton(this)) {
    text_->setText(text);
    setAccessibleName(text);
    close_->setIcon(glyphIcon(crossGlyph()));
    close_->setAutoRaise(true);
    close_->setToolTip(QStringLiteral("Close"));
    close_->setAccessibleName(QStringLiteral("Close"));
    buttons_->setSpacing(8);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(8);
    layout->addSpacing(8); // unlike a margin, on the other side where lines begin there
    layout->addWidget(text_, 1);
    layout->addLayout(buttons_);
    layout->addWidget(close_);
    connect(close_, &QToolButton::clicked, this, &QWidget::hide);
    hide();
}

void NoticeBar::addButton(const QString& text, std::function<void()> pressed) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(true); // so that Return presses it, too
    buttons_->addWidget(button);
    setTabOrder(button, close_);
    connect(button, &QPushButton::clicked, this, [this, pressed = std::move(pressed)] {
        hide();
        pressed();
    });
}

void NoticeBar::setClosable(bool isClosable) { close_->setVisible(isClosable); }

void NoticeBar::tell() {
    if (isVisibleTo(parentWidget()))
        return;
    show();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void NoticeBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QColor tint = palette().color(QPalette::Highlight);
    tint.setAlphaF(tintStrength);
    painter.fillRect(rect(), palette().window());
    painter.fillRect(rect(), tint);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.2F);
    painter.fillRect(QRect(0, height() - 1, width(), 1), line);
}

} // namespace quenby
