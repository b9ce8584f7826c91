#include "widgets/ProblemPane.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quenby {
namespace {

QLabel* centredLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

} // namespace

ProblemPane::ProblemPane(QWidget* parent)
    : QWidget(parent)
    , heading_(centredLabel(this))
    , text_(centredLabel(this))
    , tryAgain_(new QPushButton(QStringLiteral("&Try Again"), this))
    , close_(new QPushButton(QStringLiteral("&Close"), this)) {
    setAutoFillBackground(true);
    QFont font = heading_->font();
    font.setPointSizeF(font.pointSizeF() * 1.25);
    font.setBold(true);
    heading_->setFont(font);
    for (QPushButton* button : {tryAgain_, close_}) {
        button->setAutoDefault(true);
        button->setMinimumSize(112, 32);
    }

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch();
    buttons->addWidget(close_);
    buttons->addWidget(tryAgain_);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 16, 32, 32);
    layout->setSpacing(12);
    layout->addStretch();
    layout->addWidget(heading_);
    layout->addWidget(text_);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    layout->addStretch();

    connect(tryAgain_, &QPushButton::clicked, this, &ProblemPane::tryAgainRequested);
    connect(close_, &QPushButton::clicked, this, &ProblemPane::closeRequested);
}

void ProblemPane::setClosable(bool isClosable) { close_->setVisible(isClosable); }

void ProblemPane::tell(const QString& heading, const QString& text, bool canTryAgain) {
    heading_->setText(heading);
    text_->setText(text);
    setAccessibleName(heading);
    setAccessibleDescription(text);
    tryAgain_->setVisible(canTryAgain);
    show();
    raise();
    (canTryAgain ? tryAgain_ : close_)->setFocus();
}

} // namespace quenby
