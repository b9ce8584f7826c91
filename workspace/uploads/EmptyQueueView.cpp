#include "workspace/uploads/EmptyQueueView.h"

#include "widgets/SecondaryLabel.h"

#include <QVBoxLayout>

namespace quenby {

EmptyQueueView::EmptyQueueView(QWidget* parent)
    : QWidget(parent) {
    auto* heading = new QLabel(tr("No uploads"), this);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * 1.25);
    font.setWeight(QFont::DemiBold);
    heading->setFont(font);
    auto* text = new SecondaryLabel(this);
    text->setText(tr("Drop files here to upload them."));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->setSpacing(8);
    layout->addStretch();
    for (QLabel* label : {heading, static_cast<QLabel*>(text)}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        layout->addWidget(label);
    }
    layout->addStretch();
}

} // namespace quenby
