#include "app/agent/ChangesPopover.h"

#include "app/changes/ChangeFeed.h"
#include "app/dropview/dragFileImageView.h"
#include "app/popover/GearMenu.h"
#include "app/statusitem/StatusItemInputs.h"
#include "app/statusitem/StatusMenus.h"
#include "popover/changes/ScrollView.h"

namespace quenby {

ChangesPopover::ChangesPopover(const Surroundings& surroundings)
    : surroundings_(surroundings) {
    connect(&surroundings_.feed, &ChangeFeed::changed, this, &ChangesPopover::reloadMenubarData);
}

ChangesPopover::~ChangesPopover() = default;

bool ChangesPopover::isVisible() const { return popoverWindow_ && popoverWindow_->isVisible(); }

void ChangesPopover::open(const QRect& anchor) {
    make();
    popoverWindow_->open(anchor);
}

void ChangesPopover::close() {
    if (isVisible())
        popoverWindow_->close();
}

void ChangesPopover::toggle(const QRect& anchor) {
    if (isVisible())
        close();
    else
        open(anchor);
}

void ChangesPopover::reloadMenubarData() {
    if (!popoverWindow_)
        return;
    const QList<ChangeRecord>& records = surroundings_.feed.DriveChangeInfoAPI();
    tableViewChanges_->setRecords(records);
    if (!surroundings_.inputs.isSignedIn())
        popoverWindow_->setStatusText(tr("Waiting for User..."));
    else
        popoverWindow_->setStatusText(records.isEmpty() ? tr("Fetching Data...") : QString());
    popoverWindow_->setActivityIndicator(surroundings_.feed.isFetchingFirst());
}

void ChangesPopover::setAccount(const AccountDisplay& account) {
    account_ = account;
    if (popoverWindow_)
        popoverWindow_->setAccount(account_);
    reloadMenubarData();
}

void ChangesPopover::make() {
    if (popoverWindow_)
        return;
    tableViewChanges_ = new ScrollView(surroundings_.pictures, surroundings_.endpoints, surroundings_.timeSource);
    popoverWindow_ = std::make_unique<PopoverWindow>(tableViewChanges_, surroundings_.defaults);
    gearMenu_ = std::make_unique<GearMenu>(surroundings_.menus, surroundings_.inputs);
    auto* dropView = new dragFileImageView;
    popoverWindow_->setDropTarget(dropView);

    connect(dropView, &dragFileImageView::filesDropped, this, &ChangesPopover::filesDropped);
    connect(tableViewChanges_, &ScrollView::openRequested, this, &ChangesPopover::openRequested);
    connect(tableViewChanges_, &ScrollView::shareRequested, this, &ChangesPopover::shareRequested);
    connect(popoverWindow_.get(), &PopoverWindow::visibleChanged, this, &ChangesPopover::visibleChanged);
    connect(popoverWindow_.get(), &PopoverWindow::gearRequested, this,
            [this](QWidget& button) { gearMenu_->setting_btn_click(button); });
    connect(popoverWindow_.get(), &PopoverWindow::addRequested, this,
            [this](QWidget& button) { surroundings_.menus.AddNewFile(button); });
    popoverWindow_->setAccount(account_);
    reloadMenubarData();
}

} // namespace quenby
