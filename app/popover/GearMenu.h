// The menu of the popover's gear button: a line about the quota, and the commands. Built once and kept; it shares its
// commands with the status item's menus.
//
// Threads: the main thread. The menus and inputs outlive it. What it shows is brought up to date whenever it opens.
#pragma once

#include <QMenu>

#include <memory>

namespace quenby {

class StatusItemInputs;
class StatusMenus;

class GearMenu {
public:
    GearMenu(StatusMenus& menus, const StatusItemInputs& inputs);
    ~GearMenu();

    QMenu& menu() { return *menu_; }
    // Pops it up under the gear button.
    void setting_btn_click(QWidget& sender);

private:
    void refresh();

    StatusMenus& menus_;
    const StatusItemInputs& inputs_;
    const std::unique_ptr<QMenu> menu_;
    QAction* statusLine_;
    QAction* createMenu_;
};

} // namespace quenby
