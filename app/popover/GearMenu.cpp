#include "app/popover/GearMenu.h"

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
    const QWidget& window = *sender.window();
    const QRect button(sender.mapToGlobal(QPoint(0, 0)), sender.size());
    // From the button towards the middle of its window.
    const bool isAtRight = sender.mapTo(&window, sender.rect().center()).x() > window.width() / 2;
    const int x = isAtRight ? button.right() + 1 - menu_->sizeHint().width() : button.left();
    menu_->popup(QPoint(x, button.bottom() + 1));
}

} // namespace quenby
