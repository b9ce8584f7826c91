#include "workspace/tab/FindBar.h"

#include "widgets/Glyphs.h"
#include "widgets/SecondaryLabel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QToolButton>

namespace quenby {
namespace {

constexpr int textWidth = 280;

QToolButton* makeButton(const QPainterPath& glyph, const QString& name, const QString& toolTip, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(glyphIcon(glyph));
    button->setAutoRaise(true);
    button->setFixedSize(28, 28);
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(toolTip);
    button->setAccessibleName(name);
    return button;
}

} // namespace

FindBar::FindBar(QWidget* parent)
    : QWidget(parent)
    , text_(new QLineEdit(this))
    , places_(new SecondaryLabel(this))
    , previous_(makeButton(upGlyph(), QStringLiteral("Previous"), QStringLiteral("Previous (Shift+Return)"), this))
    , next_(makeButton(downGlyph(), QStringLiteral("Next"), QStringLiteral("Next (Return)"), this))
    , close_(makeButton(crossGlyph(), QStringLiteral("Close"), QStringLiteral("Close (Esc)"), this)) {
    text_->setPlaceholderText(QStringLiteral("Find in page"));
    text_->setAccessibleName(QStringLiteral("Find in page"));
    text_->setClearButtonEnabled(true);
    text_->setMaximumWidth(textWidth);
    places_->setAccessibleName(QStringLiteral("Places found"));
    setFocusProxy(text_);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(4);
    layout->addSpacing(8); // unlike a margin, on the other side where lines begin there
    layout->addWidget(text_, 2);
    layout->addWidget(previous_);
    layout->addWidget(next_);
    layout->addSpacing(8);
    layout->addWidget(places_, 1);
    layout->addWidget(close_);
    connect(text_, &QLineEdit::textChanged, this, &FindBar::textChanged);
    connect(previous_, &QToolButton::clicked, this, [this] { find(true); });
    connect(next_, &QToolButton::clicked, this, [this] { find(false); });
    connect(close_, &QToolButton::clicked, this, &FindBar::close);
    textChanged();
    hide();
}

void FindBar::open() {
    const bool wasOpen = isVisibleTo(parentWidget());
    show();
    text_->setFocus();
    text_->selectAll();
    if (!wasOpen && !text_->text().isEmpty())
        find(false);
}

void FindBar::close() {
    if (!isVisibleTo(parentWidget()))
        return;
    hide();
    places_->clear();
    Q_EMIT findRequested({}, false);
    Q_EMIT closed();
}

void FindBar::tellFound(int current, int total) {
    if (text_->text().isEmpty())
        return;
    places_->setText(total > 0 ? QStringLiteral("%1 of %2").arg(current).arg(total) : QStringLiteral("Not found"));
}

void FindBar::forgetPlaces() { places_->clear(); }

void FindBar::find(bool isBackward) {
    if (!text_->text().isEmpty())
        Q_EMIT findRequested(text_->text(), isBackward);
}

void FindBar::textChanged() {
    const bool hasText = !text_->text().isEmpty();
    previous_->setEnabled(hasText);
    next_->setEnabled(hasText);
    if (!hasText)
        places_->clear();
    Q_EMIT findRequested(text_->text(), false);
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        return close();
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return find(event->modifiers().testFlag(Qt::ShiftModifier));
    default:
        QWidget::keyPressEvent(event);
    }
}

void FindBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.2F);
    painter.fillRect(QRect(0, 0, width(), 1), line);
}

} // namespace quenby
