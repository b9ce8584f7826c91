#include "popover/window/PopoverUi.h"

#include "popover/window/ContainView.h"
#include "popover/window/CustomButton.h"
#include "popover/window/CustomWindow.h"
#include "popover/window/SeparatorLine.h"
#include "popover/window/ctmView.h"
#include "widgets/ActivityIndicator.h"
#include "widgets/ElidedLabel.h"
#include "widgets/Glyphs.h"
#include "widgets/QuotaBar.h"
#include "widgets/SecondaryLabel.h"

#include <QApplication>
#include <QGridLayout>
#include <QVBoxLayout>

#include <cmath>

namespace quenby {
namespace {

constexpr int sideMargin = 12;  // where the rows' pictures begin
constexpr int buttonMargin = 7; // with the room around a button's picture, the pictures end where the texts do
constexpr int headerMargin = 8;
constexpr int statusMargin = 24;
constexpr int wheelDiameter = 24;
constexpr int dropSide = 28;

void scaleFont(QLabel& label, qreal factor, QFont::Weight weight = QFont::Normal) {
    QFont font = label.font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(static_cast<int>(std::lround(font.pixelSize() * factor)));
    font.setWeight(weight);
    label.setFont(font);
}

QHBoxLayout* makeTopLine(const PopoverUi& ui) {
    auto* names = new QVBoxLayout;
    names->setSpacing(1);
    names->addWidget(ui.userName);
    names->addWidget(ui.accountName);
    auto* line = new QHBoxLayout;
    line->setSpacing(8);
    line->addSpacing(sideMargin - buttonMargin);
    line->addLayout(names, 1);
    line->addWidget(ui.buttonview, 0, Qt::AlignTop);
    return line;
}

QWidget* makeHeader(const PopoverUi& ui) {
    auto* header = new QWidget(ui.containWindow);
    // Together with the window's border above it.
    header->setMinimumHeight(popoverHeaderHeight - customWindowBorder);
    header->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* quota = new QHBoxLayout;
    quota->setSpacing(8);
    quota->addSpacing(sideMargin - buttonMargin);
    quota->addWidget(ui.quotaBar, 1, Qt::AlignVCenter);
    quota->addWidget(ui.quotaText);
    quota->addSpacing(sideMargin - buttonMargin);
    auto* inner = new QVBoxLayout;
    inner->setContentsMargins(buttonMargin, headerMargin, buttonMargin, headerMargin);
    inner->setSpacing(4);
    inner->addLayout(makeTopLine(ui));
    inner->addStretch(1);
    inner->addLayout(quota);
    auto* layout = new QVBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(inner, 1);
    layout->addWidget(new SeparatorLine(header));
    return header;
}

void fillStatusPane(const PopoverUi& ui) {
    auto* layout = new QVBoxLayout(ui.statusPane);
    layout->setContentsMargins(statusMargin, 0, statusMargin, 0);
    layout->setSpacing(12);
    layout->addStretch(1);
    layout->addWidget(ui.activityIndicator, 0, Qt::AlignHCenter);
    layout->addWidget(ui.statusText);
    layout->addStretch(1);
}

void fillContainWindow(const PopoverUi& ui) {
    auto* layout = new QGridLayout(ui.containWindow);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeHeader(ui), 0, 0);
    layout->addWidget(ui.changes, 1, 0);
    layout->addWidget(ui.statusPane, 1, 0);
    layout->setRowStretch(1, 1);
}

} // namespace

PopoverUi::PopoverUi(CustomWindow& window, QWidget* list, Defaults& defaults)
    : containWindow(new ContainView(&window))
    , userName(new ElidedLabel(containWindow))
    , accountName(new SecondaryLabel(containWindow))
    , buttonview(new QWidget(containWindow))
    , buttonLayout(new QHBoxLayout(buttonview))
    , addButton(new CustomButton(plusGlyph(), QStringLiteral("Add to the Drive"), buttonview))
    , gearButton(new CustomButton(gearGlyph(), QStringLiteral("Settings"), buttonview))
    , quotaBar(new QuotaBar(containWindow))
    , quotaText(new SecondaryLabel(containWindow))
    , changes(list)
    , statusPane(new QWidget(containWindow))
    , activityIndicator(new ActivityIndicator(statusPane))
    , statusText(new SecondaryLabel(statusPane))
    , grip(new ctmView(window, defaults))
    , layout(new QVBoxLayout(&window)) {
    scaleFont(*userName, 1.05, QFont::DemiBold);
    scaleFont(*accountName, 0.92);
    scaleFont(*quotaText, 0.92);
    buttonLayout->setContentsMargins(0, 0, 0, 0);
    buttonLayout->setSpacing(4);
    buttonLayout->addWidget(addButton);
    buttonLayout->addWidget(gearButton);
    // Without a bar its text begins where lines do; the header keeps its height all the same.
    QSizePolicy policy = quotaBar->sizePolicy();
    policy.setRetainSizeWhenHidden(false);
    quotaBar->setSizePolicy(policy);
    activityIndicator->setDiameter(wheelDiameter);
    statusText->setAlignment(Qt::AlignCenter);
    statusText->setWordWrap(true);
    statusPane->setAttribute(Qt::WA_TransparentForMouseEvents); // the list below it stays in reach
    changes->setParent(containWindow);
    fillStatusPane(*this);
    fillContainWindow(*this);

    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    // The window's size is the user's and the screen's.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(containWindow, 1);
    layout->addWidget(new SeparatorLine(&window));
    layout->addWidget(grip);
    showStatus({}, false);

    QWidget::setTabOrder(addButton, gearButton);
    QWidget::setTabOrder(gearButton, changes);
}

void PopoverUi::setMovingEdge(Qt::Edge edge) {
    grip->setMovingEdge(edge);
    containWindow->setAtBottom(edge == Qt::TopEdge);
    layout->setDirection(edge == Qt::TopEdge ? QBoxLayout::BottomToTop : QBoxLayout::TopToBottom);
}

void PopoverUi::showStatus(const QString& text, bool isBusy) {
    const bool isListed = text.isEmpty();
    // Left to itself, the focus would go on as if Tab had been pressed, and show it.
    if (!isListed && changes->isAncestorOf(QApplication::focusWidget()))
        addButton->setFocus(Qt::OtherFocusReason);
    statusText->setText(text);
    statusText->setVisible(!text.isEmpty());
    activityIndicator->setVisible(isBusy);
    statusPane->setVisible(isBusy || !text.isEmpty());
    changes->setVisible(isListed);
    statusPane->raise();
    if (isListed && addButton->hasFocus() && !addButton->window()->testAttribute(Qt::WA_KeyboardFocusChange))
        changes->setFocus(Qt::OtherFocusReason);
}

void PopoverUi::setDropTarget(QWidget* dropTarget) {
    while (buttonLayout->itemAt(0)->widget() != addButton) {
        const QLayoutItem* const former = buttonLayout->takeAt(0);
        delete former->widget();
        delete former;
    }
    if (!dropTarget)
        return;
    dropTarget->setFixedSize(dropSide, dropSide);
    buttonLayout->insertWidget(0, dropTarget);
}

} // namespace quenby
