#include "workspace/window/WorkspaceToolBar.h"

#include "widgets/GlyphButton.h"
#include "widgets/Glyphs.h"

#include <QAction>
#include <QMenu>
#include <QToolButton>

#include <array>

namespace quenby {
namespace {

constexpr int iconSide = 20;

struct CommandRow {
    ToolBarCommand command;
    const char* text; // for people who don't see the picture, and the tool tip
    QPainterPath (*glyph)();
    const char* keys; // shown in the tool tip; whoever carries the command out listens for them
    bool pointsSomewhere = false;
    bool isCheckable = false;
};

constexpr std::array commandRows{
    CommandRow{ToolBarCommand::home, "First Tab", homeGlyph, ""},
    CommandRow{ToolBarCommand::back, "Back", backGlyph, "Alt+Left", true},
    CommandRow{ToolBarCommand::forward, "Forward", forwardGlyph, "Alt+Right", true},
    CommandRow{ToolBarCommand::reload, "Reload", reloadGlyph, "F5"},
    CommandRow{ToolBarCommand::upload, "Upload File", uploadGlyph, ""},
    CommandRow{ToolBarCommand::record, "Record Screen", recordGlyph, ""},
    CommandRow{ToolBarCommand::changes, "Show Changes", changesGlyph, ""},
    CommandRow{ToolBarCommand::transfers, "Transfers", transfersGlyph, "", false, true},
    CommandRow{ToolBarCommand::preferences, "Preferences", gearGlyph, ""},
    CommandRow{ToolBarCommand::fullScreen, "Full Screen", fullScreenGlyph, "F11", false, true},
};

// The tags count from 1.
constexpr std::array newDocuments{"&Document", "&Presentation", "&Spreadsheet", "&Form", "D&rawing", "&My Maps"};

QString tipOf(const CommandRow& row) {
    const QString text = QString::fromLatin1(row.text);
    return *row.keys ? QString(text + QStringLiteral(" (") + QString::fromLatin1(row.keys) + QLatin1Char(')')) : text;
}

// The name's mnemonic works, though only the picture is seen.
QToolButton* menuButton(QWidget* parent, const QPainterPath& glyph, const QString& text) {
    const QString name = QString(text).remove(QLatin1Char('&'));
    auto* button = new GlyphButton(iconSide, parent);
    button->setText(text);
    button->setIcon(glyphIcon(glyph));
    button->setPopupMode(QToolButton::InstantPopup);
    button->setAccessibleName(name);
    button->setToolTip(name);
    return button;
}

} // namespace

WorkspaceToolBar::WorkspaceToolBar(QWidget* parent)
    : QToolBar(QStringLiteral("Tools"), parent) {
    setObjectName(QStringLiteral("WorkspaceToolBar"));
    setMovable(false);
    setFloatable(false);
    setContextMenuPolicy(Qt::PreventContextMenu); // it would offer to hide the bar
    makeActions();
    addCommands({ToolBarCommand::home, ToolBarCommand::back, ToolBarCommand::forward, ToolBarCommand::reload});
    addSeparator();
    addWidget(makeNewButton());
    addCommands({ToolBarCommand::upload, ToolBarCommand::record});
    addStretch();
    addCommands(
        {ToolBarCommand::changes, ToolBarCommand::transfers, ToolBarCommand::preferences, ToolBarCommand::fullScreen});
    menuButton_ = menuButton(this, menuGlyph(), QStringLiteral("&Menu"));
    menuAction_ = addWidget(menuButton_);
    menuAction_->setVisible(false);
    setToolBarButton(false, false);
}

WorkspaceToolBar::~WorkspaceToolBar() = default;

void WorkspaceToolBar::makeActions() {
    for (const CommandRow& row : commandRows) {
        auto* action = new QAction(glyphIcon(row.glyph(), row.pointsSomewhere), QString::fromLatin1(row.text), this);
        action->setToolTip(tipOf(row));
        action->setCheckable(row.isCheckable);
        connect(action, &QAction::triggered, this, [this, command = row.command] { Q_EMIT triggered(command); });
        actions_.emplace(row.command, action);
    }
}

void WorkspaceToolBar::addCommands(std::initializer_list<ToolBarCommand> commands) {
    for (const ToolBarCommand command : commands) {
        auto* button = new GlyphButton(iconSide, this);
        button->setDefaultAction(actions_.at(command));
        button->setAccessibleName(actions_.at(command)->text());
        buttons_.emplace(command, button);
        addWidget(button);
    }
}

void WorkspaceToolBar::addStretch() {
    auto* stretch = new QWidget(this);
    stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(stretch);
}

QToolButton* WorkspaceToolBar::makeNewButton() {
    auto* button = menuButton(this, newDocumentGlyph(), QStringLiteral("&New Document"));
    auto* menu = new QMenu(button);
    int tag = 0;
    for (const char* text : newDocuments) {
        ++tag;
        connect(menu->addAction(QString::fromLatin1(text)), &QAction::triggered, this,
                [this, tag] { Q_EMIT OpenNewGoogle(tag); });
    }
    button->setMenu(menu);
    return button;
}

void WorkspaceToolBar::setToolBarButton(bool canGoBack, bool canGoForward) {
    action(ToolBarCommand::back)->setEnabled(canGoBack);
    action(ToolBarCommand::forward)->setEnabled(canGoForward);
}

void WorkspaceToolBar::setRunningTransfers(int count) {
    if (std::exchange(running_, count) == count)
        return;
    const QString text = QStringLiteral("Transfers");
    QAction* transfers = action(ToolBarCommand::transfers);
    transfers->setIcon(count > 0 ? markedGlyphIcon(transfersGlyph()) : glyphIcon(transfersGlyph()));
    transfers->setToolTip(count > 0 ? QStringLiteral("%1 (%2 running)").arg(text).arg(count) : text);
    buttons_.at(ToolBarCommand::transfers)
        ->setAccessibleDescription(count > 0 ? QStringLiteral("%1 running").arg(count) : QString());
}

void WorkspaceToolBar::setCommandsMenu(QMenu* menu) {
    menuButton_->setMenu(menu);
    menuAction_->setVisible(menu != nullptr);
}

} // namespace quenby
