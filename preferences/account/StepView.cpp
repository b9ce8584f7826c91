#include "preferences/account/StepView.h"

#include "preferences/account/StepMarker.h"
#include "widgets/SecondaryLabel.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace quenby {
namespace {

constexpr int besideMarker = 12;
constexpr int lineSpacing = 4;
constexpr int buttonSpacing = 8;
constexpr qreal outline = 2;
constexpr qreal cornerRadius = 6;
constexpr float groundStrength = 0.12F;

void makeBold(QLabel& label) {
    QFont font = label.font();
    font.setWeight(QFont::DemiBold);
    label.setFont(font);
}

} // namespace

StepView::StepView(int number, const QString& title, const QString& explanation, QWidget* parent)
    : QWidget(parent)
    , number_(number)
    , title_(title)
    , marker_(new StepMarker(number, this))
    , explanation_(new SecondaryLabel(this))
    , sentence_(new ElidedLabel(this))
    , lines_(new QVBoxLayout) {
    auto* heading = new ElidedLabel(this);
    heading->setText(title);
    makeBold(*heading);
    heading->setMinimumHeight(marker_->height());
    explanation_->setWordWrap(true);
    sentence_->setWordWrap(true);
    sentence_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    lines_->setSpacing(lineSpacing);
    for (QLabel* line : {static_cast<QLabel*>(heading), explanation_, sentence_})
        lines_->addWidget(line);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(inset, inset, inset, inset);
    layout->setSpacing(besideMarker);
    layout->addWidget(marker_, 0, Qt::AlignTop);
    layout->addLayout(lines_, 1);
    setExplanation(explanation);
    setState(State::waiting);
}

QPushButton* StepView::addButton(const QString& text) {
    if (!buttons_) {
        buttons_ = new QHBoxLayout;
        buttons_->setContentsMargins(0, lineSpacing, 0, 0);
        buttons_->setSpacing(buttonSpacing);
        buttons_->addStretch(1);
        lines_->addLayout(buttons_);
    }
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(true); // so that Return presses it, too
    buttons_->insertWidget(buttons_->count() - 1, button);
    return button;
}

void StepView::setExplanation(const QString& explanation) {
    explanation_->setText(explanation);
    explanation_->setVisible(!explanation.isEmpty());
}

void StepView::setState(State state, const QString& sentence) {
    state_ = state;
    marker_->setState(state);
    sentence_->setText(sentence);
    sentence_->setVisible(!sentence.isEmpty());
    const QString how = state == State::fine       ? tr("fine")
                        : state == State::wrong    ? tr("something is wrong")
                        : state == State::checking ? tr("being checked")
                                                   : tr("not done yet");
    setAccessibleName(tr("Step %1, %2: %3").arg(QString::number(number_), title_, how));
    setAccessibleDescription(sentence);
    if (!sentence.isEmpty()) {
        QAccessibleEvent told(sentence_, QAccessible::Alert);
        QAccessible::updateAccessibility(&told);
    }
}

QString StepView::sentence() const { return sentence_->text(); }

void StepView::setHighlighted(bool isHighlighted) {
    isHighlighted_ = isHighlighted;
    update();
}

void StepView::paintEvent(QPaintEvent*) {
    if (!isHighlighted_)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor colour = palette().color(QPalette::Highlight);
    painter.setPen(QPen(colour, outline));
    colour.setAlphaF(groundStrength);
    painter.setBrush(colour);
    constexpr qreal half = outline / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), cornerRadius, cornerRadius);
}

} // namespace quenby
