#include "preferences/window/PaneBar.h"

#include "widgets/GlyphButton.h"
#include "widgets/Glyphs.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QPainter>
#include <QShortcut>

namespace quenby {
namespace {

constexpr int glyphSide = 22;
constexpr int smallestItem = 76; // wide, so that short names have as much room as long ones
constexpr int margin = 4;
constexpr int lineWidth = 1;
constexpr float lineStrength = 0.18F; // of the text's colour

} // namespace

PaneBar::PaneBar(QWidget* parent)
    : QWidget(parent)
    , layout_(new QHBoxLayout(this))
    , group_(new QButtonGroup(this)) {
    layout_->setContentsMargins(margin, margin, margin, margin + lineWidth);
    layout_->setSpacing(margin);
    layout_->addStretch(1);
    layout_->addStretch(1);
    connect(group_, &QButtonGroup::idToggled, this, [this](int index, bool isOn) {
        QAbstractButton* item = group_->button(index);
        item->setFocusPolicy(isOn ? Qt::TabFocus : Qt::NoFocus); // the Tab key comes to the chosen one
        if (!isOn)
            return;
        setFocusProxy(item);
        Q_EMIT currentChanged(index);
    });
}

void PaneBar::addItem(const QString& name, const QPainterPath& glyph) {
    const int index = static_cast<int>(group_->buttons().size());
    const QKeySequence keys(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + index));
    auto* item = new GlyphButton(glyphSide, this);
    item->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    item->setText(name);
    item->setIcon(glyphIcon(glyph));
    item->setToolTip(name + QStringLiteral(" (") + keys.toString(QKeySequence::NativeText) + QLatin1Char(')'));
    item->setAccessibleName(name);
    item->setCheckable(true);
    item->setFocusPolicy(Qt::NoFocus);
    item->setMinimumWidth(smallestItem);
    group_->addButton(item, index);
    layout_->insertWidget(layout_->count() - 1, item);
    connect(new QShortcut(keys, this), &QShortcut::activated, item, [item] {
        if (item->isChecked())
            return;
        item->setFocus(Qt::ShortcutFocusReason); // who works with the keyboard goes on from here
        item->setChecked(true);
    });
}

int PaneBar::current() const { return group_->checkedId(); }

void PaneBar::setCurrent(int index) {
    if (QAbstractButton* item = group_->button(index))
        item->setChecked(true);
}

void PaneBar::paintEvent(QPaintEvent*) {
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(lineStrength);
    QPainter(this).fillRect(0, height() - lineWidth, width(), lineWidth, line);
}

} // namespace quenby
