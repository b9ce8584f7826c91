#include "preferences/general/NoticeLine.h"

#include "widgets/Glyphs.h"
#include "widgets/SecondaryLabel.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>

namespace quenby {
namespace {

constexpr int signDistance = 6;

int signSide(const QWidget& line) { return line.fontMetrics().ascent() + 2; }

QLabel* makeText(NoticeLine::Kind kind, QWidget* line) {
    QLabel* text = kind == NoticeLine::Kind::hint ? new SecondaryLabel(line) : new ElidedLabel(line);
    text->setWordWrap(true);
    return text;
}

} // namespace

NoticeLine::NoticeLine(Kind kind, QWidget* about, QWidget* parent)
    : QWidget(parent)
    , sign_(kind == Kind::trouble ? glyphIcon(warningGlyph()) : QIcon())
    , about_(about)
    , text_(makeText(kind, this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (!sign_.isNull())
        layout->addSpacing(signSide(*this) + signDistance);
    layout->addWidget(text_, 1);
    hide();
}

void NoticeLine::tell(const QString& sentence) {
    const bool isNews = !sentence.isEmpty() && sentence != text_->text();
    text_->setText(sentence);
    about_->setAccessibleDescription(sentence);
    setVisible(!sentence.isEmpty());
    if (!isNews || !isVisible())
        return;
    // Screen readers follow no text that changes by itself.
    QAccessibleEvent told(text_, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

QString NoticeLine::text() const { return text_->text(); }

void NoticeLine::paintEvent(QPaintEvent*) {
    if (sign_.isNull())
        return;
    // On the height of the first line.
    const int side = signSide(*this);
    const QRect sign(0, (fontMetrics().height() - side) / 2, side, side);
    QPainter painter(this);
    sign_.paint(&painter, QStyle::visualRect(layoutDirection(), rect(), sign));
}

} // namespace quenby
