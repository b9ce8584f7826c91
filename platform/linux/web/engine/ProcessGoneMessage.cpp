#include "platform/linux/web/engine/ProcessGoneMessage.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quenby {

ProcessGoneMessage::ProcessGoneMessage(QWidget* parent)
    : QWidget(parent)
    , reload_(new QPushButton(tr("&Reload"), this)) {
    auto* title = new QLabel(tr("This page stopped working"), this);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    title->setFont(font);
    title->setAlignment(Qt::AlignCenter);
    title->setWordWrap(true);
    auto* text =
        new QLabel(tr("What you had typed into it is lost; everything else is safe. Reload it to go on."), this);
    text->setAlignment(Qt::AlignCenter);
    text->setWordWrap(true);
    text->setMaximumWidth(fontMetrics().averageCharWidth() * 60);
    reload_->setAutoDefault(true);
    setFocusProxy(reload_);
    connect(reload_, &QPushButton::clicked, this, &ProcessGoneMessage::reloadRequested);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->setSpacing(12);
    layout->addStretch();
    layout->addWidget(title);
    layout->addWidget(text); // as wide as there is room: it is broken into lines
    layout->addWidget(reload_, 0, Qt::AlignHCenter);
    layout->addStretch();
    setAutoFillBackground(true);
}

} // namespace quenby
