#include "workspace/uploads/RestBar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace quenby {
namespace {

// How much of the highlight's colour is in the ground: enough to be seen, too little to hurt the text's contrast.
constexpr float tintStrength = 0.14F;
constexpr float lineStrength = 0.2F;

} // namespace

RestBar::RestBar(QWidget* parent)
    : QWidget(parent)
    , text_(new QLabel(this))
    , anyway_(new QPushButton(tr("Upload &Anyway"), this)) {
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    anyway_->setAutoDefault(true); // so that Return presses it, too
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 12, 7);
    layout->setSpacing(12);
    layout->addWidget(text_, 1);
    layout->addWidget(anyway_, 0, Qt::AlignVCenter);
    connect(anyway_, &QPushButton::clicked, this, &RestBar::uploadAnywayRequested);
    hide();
}

void RestBar::tell(const QString& sentence) {
    if (text_->text() == sentence)
        return;
    text_->setText(sentence);
    anyway_->setAccessibleDescription(sentence);
    setAccessibleName(sentence);
    setVisible(!sentence.isEmpty());
    if (sentence.isEmpty())
        return;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void RestBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QColor tint = palette().color(QPalette::Highlight);
    tint.setAlphaF(tintStrength);
    painter.fillRect(rect(), tint);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(lineStrength);
    painter.fillRect(QRect(0, height() - 1, width(), 1), line);
}

} // namespace quenby
