// The menus of the status item: all commands (statusMenu), and those that put something into the Drive (addFileMenu).
//
// Threads: the main thread. What the menus show is brought up to date whenever one opens; refresh() does it for a menu
// that somebody else shows, such as a tray that keeps a copy. The inputs and the defaults outlive this; the menus end
// with it.
#pragma once

#include "app/statusitem/StatusMenuCommands.h"

#include <QMenu>
#include <QObject>

#include <map>
#include <memory>
#include <set>

namespace quenby {

class Defaults;
class StatusItemInputs;

class StatusMenus : public QObject {
    Q_OBJECT

public:
    StatusMenus(const StatusItemInputs& inputs, Defaults& defaults);
    ~StatusMenus() override;

    QMenu& statusMenu() { return *statusMenu_; }
    QMenu& addFileMenu() { return *addFileMenu_; }
    QAction* action(MenuCommand command) const { return actions_.at(command); }

    // Whether somebody carries the command out; nobody does at first, but for those of the workspace window, the
    // uploads, the account and the end. A command that needs an account stays disabled while nobody is signed in.
    void enable(MenuCommand command, bool isCarriedOut);
    void refresh();
    // Pops up addFileMenu under the view that asks for it.
    void AddNewFile(QWidget& sender);

Q_SIGNALS:
    void triggered(quenby::MenuCommand command);

private:
    void makeActions();
    void fillStatusMenu();
    void fillAddFileMenu();
    QMenu* makeShowMenu();
    QAction* makeSwitch(const QString& text, const QString& key);
    void add(QMenu& menu, std::initializer_list<MenuCommand> commands);

    const StatusItemInputs& inputs_;
    Defaults& defaults_;
    std::map<MenuCommand, QAction*> actions_;
    std::set<MenuCommand> carriedOut_;
    QAction* quotaLine_;
    std::unique_ptr<QMenu> statusMenu_;
    std::unique_ptr<QMenu> addFileMenu_;
};

// "37% of 15 GB used", or why there is nothing to tell.
QString quotaLine(const StatusItemInputs& inputs);

} // namespace quenby
