#include "app/statusitem/StatusMenus.h"

#include "app/account/AccountSummary.h"
#include "app/statusitem/MenuPlace.h"
#include "app/statusitem/StatusItemInputs.h"
#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

#include <QAction>

namespace quenby {

QString quotaLine(const StatusItemInputs& inputs) {
    if (!inputs.isSignedIn())
        return QStringLiteral("Data not available");
    const AccountSummary summary = inputs.accountSummary();
    return summary.isComplete() ? quotaText(summary) : QStringLiteral("Fetching...");
}

StatusMenus::StatusMenus(const StatusItemInputs& inputs, Defaults& defaults)
    : inputs_(inputs)
    , defaults_(defaults)
    , carriedOut_{MenuCommand::showQuenby, MenuCommand::uploadFile, MenuCommand::uploadAndShareFile,
                  MenuCommand::signIn,     MenuCommand::signOut,    MenuCommand::quit}
    , quotaLine_(new QAction(QStringLiteral("initData"), this))
    , statusMenu_(std::make_unique<QMenu>(QStringLiteral("Quenby")))
    , addFileMenu_(std::make_unique<QMenu>(QStringLiteral("&New"))) {
    quotaLine_->setEnabled(false);
    makeActions();
    fillStatusMenu();
    fillAddFileMenu();
    for (const QMenu* menu : {statusMenu_.get(), addFileMenu_.get()})
        connect(menu, &QMenu::aboutToShow, this, &StatusMenus::refresh);
    refresh();
}

StatusMenus::~StatusMenus() = default;

void StatusMenus::makeActions() {
    for (const MenuCommandRow& row : menuCommands()) {
        auto* action = new QAction(QString::fromUtf8(row.text), this);
        connect(action, &QAction::triggered, this, [this, command = row.command] { Q_EMIT triggered(command); });
        actions_.emplace(row.command, action);
    }
}

void StatusMenus::fillStatusMenu() {
    add(*statusMenu_, {MenuCommand::showChanges, MenuCommand::showQuenby});
    statusMenu_->addSeparator();
    add(*statusMenu_,
        {MenuCommand::uploadFile, MenuCommand::uploadAndShareFile, MenuCommand::captureAndUploadScreenshot,
         MenuCommand::uploadClipboard, MenuCommand::recordScreen});
    statusMenu_->addSeparator();
    add(*statusMenu_, {MenuCommand::showUploads});
    statusMenu_->addAction(makeSwitch(QStringLiteral("Paus&e Uploads"), defaultsKey::uploadsPaused));
    statusMenu_->addSeparator();
    statusMenu_->addAction(quotaLine_);
    statusMenu_->addSeparator();
    statusMenu_->addMenu(makeShowMenu());
    add(*statusMenu_, {MenuCommand::preferences});
    statusMenu_->addSeparator();
    add(*statusMenu_, {MenuCommand::signIn, MenuCommand::signOut, MenuCommand::quit});
}

void StatusMenus::fillAddFileMenu() {
    add(*addFileMenu_,
        {MenuCommand::uploadFile, MenuCommand::uploadAndShareFile, MenuCommand::captureAndUploadScreenshot,
         MenuCommand::uploadClipboard, MenuCommand::recordScreen});
}

void StatusMenus::add(QMenu& menu, std::initializer_list<MenuCommand> commands) {
    for (const MenuCommand command : commands)
        menu.addAction(actions_.at(command));
}

QMenu* StatusMenus::makeShowMenu() {
    auto* menu = new QMenu(QStringLiteral("Show &in Status Bar"), statusMenu_.get());
    menu->addAction(makeSwitch(QStringLiteral("&Icon"), defaultsKey::showMenubarIcon));
    menu->addAction(makeSwitch(QStringLiteral("Storage &Use"), defaultsKey::showUsegeText));
    return menu;
}

// A check mark that is the setting: either changes with the other.
QAction* StatusMenus::makeSwitch(const QString& text, const QString& key) {
    auto* action = new QAction(text, this);
    action->setCheckable(true);
    action->setChecked(defaults_.boolForKey(key));
    connect(action, &QAction::triggered, this,
            [this, key](bool isChecked) { defaults_.setValueForKey(key, isChecked); });
    connect(&defaults_, &Defaults::changed, action, [this, action, key](const QString& changed) {
        if (changed == key)
            action->setChecked(defaults_.boolForKey(key));
    });
    return action;
}

void StatusMenus::enable(MenuCommand command, bool isCarriedOut) {
    if (isCarriedOut)
        carriedOut_.insert(command);
    else
        carriedOut_.erase(command);
    refresh();
}

void StatusMenus::refresh() {
    using enum MenuCommandRow::Availability;
    const bool isSignedIn = inputs_.isSignedIn();
    for (const MenuCommandRow& row : menuCommands()) {
        QAction& action = *actions_.at(row.command);
        const bool isAllowed = row.availability != disabledWhenSignedOut || isSignedIn;
        action.setEnabled(isAllowed && carriedOut_.contains(row.command));
        action.setVisible(row.availability != (isSignedIn ? hiddenWhenSignedIn : hiddenWhenSignedOut));
    }
    quotaLine_->setText(quotaLine(inputs_));
}

void StatusMenus::AddNewFile(QWidget& sender) {
    refresh(); // its width decides the place
    addFileMenu_->popup(menuPlaceUnder(sender, *addFileMenu_));
}

} // namespace quenby
