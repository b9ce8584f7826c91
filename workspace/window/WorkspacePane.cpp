#include "workspace/window/WorkspacePane.h"

#include "platform/Defaults.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/PaneSplitter.h"
#include "workspace/window/SidePanel.h"
#include "workspace/window/WorkspaceToolBar.h"

#include <QAction>
#include <QCursor>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

constexpr int smallestPageWidth = 440; // beside the side panel
constexpr int addressPadding = 4;

QString shownKey() { return QStringLiteral("WorkspaceSidePanelShown"); }
QString widthKey() { return QStringLiteral("WorkspaceSidePanelWidth"); }

int keptWidth(const Defaults& defaults) {
    const int width = defaults.valueForKey(widthKey()).toInt();
    return width > 0 ? std::clamp(width, SidePanel::smallestWidth, SidePanel::largestWidth) : SidePanel::usualWidth;
}

QVBoxLayout* bareLayout(QWidget* widget) {
    auto* layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

QLabel* makeAddressLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setAutoFillBackground(true);
    label->setBackgroundRole(QPalette::ToolTipBase);
    label->setForegroundRole(QPalette::ToolTipText);
    label->setMargin(addressPadding);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->hide();
    return label;
}

} // namespace

WorkspacePane::WorkspacePane(Defaults& defaults, QWidget* parent)
    : QWidget(parent)
    , defaults_(defaults)
    , toolBar_(new WorkspaceToolBar(this))
    , splitter_(new PaneSplitter(this))
    , middle_(new QWidget(splitter_))
    , sidePanel_(new SidePanel(splitter_))
    , address_(makeAddressLabel(this))
    , sidePanelWidth_(keptWidth(defaults)) {
    auto* layout = bareLayout(this);
    layout->addWidget(toolBar_);
    layout->addWidget(splitter_, 1);
    bareLayout(middle_);
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 0);
    splitter_->setSizes({100000, sidePanelWidth_});
    connect(splitter_, &QSplitter::splitterMoved, this, &WorkspacePane::keepSidePanelWidth);

    QAction* transfers = toolBar_->action(ToolBarCommand::transfers);
    transfers->setChecked(defaults_.boolForKey(shownKey(), true));
    showSidePanel();
    connect(transfers, &QAction::toggled, this, &WorkspacePane::showSidePanel);
    connect(transfers, &QAction::triggered, this, &WorkspacePane::keepSidePanel);
    connect(sidePanel_, &SidePanel::closeRequested, this, [this, transfers] {
        if (isNarrow_)
            transfers->setChecked(false);
    });
}

WorkspacePane::~WorkspacePane() = default;

AccountView& WorkspacePane::accountView() const { return sidePanel_->accountView(); }

void WorkspacePane::setTabs(QWidget* tabs) {
    tabs_ = tabs;
    middle_->layout()->addWidget(tabs);
}

void WorkspacePane::setDownloadsView(QWidget* view) { sidePanel_->setDownloadsView(view); }

void WorkspacePane::focusFirst() {
    if (tabs_)
        tabs_->setFocus(Qt::OtherFocusReason);
    else
        accountView().focusFirst();
}

void WorkspacePane::setPageAlone(bool isAlone) {
    isPageAlone_ = isAlone;
    toolBar_->setVisible(!isAlone);
    showSidePanel();
}

// --- The side panel -------------------------------------------------------------------------------------------------

// Crossing over is not the user's choice, and so is not kept: a window that gets wide again looks as it did.
void WorkspacePane::placeSidePanel() {
    const bool isNarrow = width() < sidePanelWidth_ + smallestPageWidth;
    if (std::exchange(isNarrow_, isNarrow) != isNarrow) {
        if (isNarrow) {
            sidePanel_->setParent(this);
        } else {
            splitter_->addWidget(sidePanel_);
            splitter_->setSizes({width() - sidePanelWidth_ - splitter_->handleWidth(), sidePanelWidth_});
        }
        sidePanel_->setOverPage(isNarrow);
        toolBar_->action(ToolBarCommand::transfers)->setChecked(!isNarrow && defaults_.boolForKey(shownKey(), true));
        showSidePanel();
    }
    if (isNarrow_) {
        const int top = toolBar_->sizeHint().height();
        const QRect place(width() - sidePanelWidth_, top, sidePanelWidth_, height() - top);
        sidePanel_->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    }
}

void WorkspacePane::showSidePanel() {
    sidePanel_->setVisible(!isPageAlone_ && toolBar_->action(ToolBarCommand::transfers)->isChecked());
    if (isNarrow_)
        sidePanel_->raise();
}

void WorkspacePane::keepSidePanel() {
    if (!isNarrow_)
        defaults_.setValueForKey(shownKey(), toolBar_->action(ToolBarCommand::transfers)->isChecked());
}

void WorkspacePane::keepSidePanelWidth() {
    sidePanelWidth_ = sidePanel_->width();
    defaults_.setValueForKey(widthKey(), sidePanelWidth_);
}

// --- The address under the pointer ----------------------------------------------------------------------------------

void WorkspacePane::showAddress(const QString& address) {
    if (address.isEmpty())
        return address_->hide();
    const int room = middle_->width() * 2 / 3;
    address_->setText(address_->fontMetrics().elidedText(address, Qt::ElideMiddle, room));
    address_->adjustSize();
    placeAddress();
    address_->show();
    address_->raise();
}

void WorkspacePane::placeAddress() {
    const QRect area(middle_->mapTo(this, QPoint()), middle_->size());
    QRect place(QPoint(area.left(), area.bottom() + 1 - address_->height()), address_->size());
    if (place.adjusted(-8, -8, 8, 8).contains(mapFromGlobal(QCursor::pos())))
        place.moveRight(area.right());
    address_->move(place.topLeft());
}

void WorkspacePane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    address_->hide();
    placeSidePanel();
}

} // namespace quenby
