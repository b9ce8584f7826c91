#include "app/popover/GearMenu.h"

#include "app/statusitem/MenuPlace.h"
#include "app/statusitem/StatusItemInputs.h"
#include "app/statusitem/StatusMenus.h"

#include <QAction>

namespace quenby {

GearMenu::GearMenu(StatusMenus& menus, const StatusItemInputs& inputs)
    : menus_(menus)
    , inputs_(inputs)
    , menu_(std::make_unique<QMenu>(QStringLiteral("Settings")))
    , statusLine_(menu_->addAction(QStringLiteral("initData"))) {
    statusLine_->setEnabled(false);
    menu_->addSeparator();
    createMenu_ = menu_->addMenu(&menus.addFileMenu());
    menu_->addAction(menus.action(MenuCommand::uploadFile));
    menu_->addSeparator();
    menu_->addAction(menus.action(MenuCommand::preferences));
    menu_->addAction(menus.action(MenuCommand::quit));
    QObject::connect(menu_.get(), &QMenu::aboutToShow, menu_.get(), [this] { refresh(); });
}

GearMenu::~GearMenu() = default;

void GearMenu::refresh() {
    menus_.refresh();
    statusLine_->setText(quotaLine(inputs_));
    createMenu_->setEnabled(inputs_.isSignedIn());
}

void GearMenu::setting_btn_click(QWidget& sender) {
    refresh(); // its width decides the place
    menu_->popup(menuPlaceUnder(sender, *menu_));
}

} // namespace quenby
