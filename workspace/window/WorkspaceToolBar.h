// The workspace's toolbar: what can be done with the tabs, and the program's commands.
//
// Threads: the main thread. It decides nothing: it tells what the user wants.
#pragma once

#include <QToolBar>

#include <map>

class QAction;
class QMenu;
class QToolButton;

namespace quenby {

enum class ToolBarCommand {
    home,
    back,
    forward,
    reload,
    upload,
    record,
    changes,
    transfers, // the side panel with uploads and downloads; checkable
    preferences,
    fullScreen, // checkable
};

class WorkspaceToolBar final : public QToolBar {
    Q_OBJECT

public:
    explicit WorkspaceToolBar(QWidget* parent = nullptr);
    ~WorkspaceToolBar() override;

    QAction* action(ToolBarCommand command) const { return actions_.at(command); }
    // Of the selected tab.
    void setToolBarButton(bool canGoBack, bool canGoForward);
    // How many uploads and downloads run; a small mark on the transfers' button says so.
    void setRunningTransfers(int count);
    // All commands, behind a button at the end. Not owned.
    void setCommandsMenu(QMenu* menu);

Q_SIGNALS:
    void triggered(quenby::ToolBarCommand command);
    // A kind of new document, by its tag (1 to 6), of the menu behind "New".
    void OpenNewGoogle(int tag);

private:
    void makeActions();
    void addCommands(std::initializer_list<ToolBarCommand> commands);
    void addStretch();
    QToolButton* makeNewButton();

    std::map<ToolBarCommand, QAction*> actions_;
    std::map<ToolBarCommand, QToolButton*> buttons_;
    QToolButton* menuButton_ = nullptr;
    QAction* menuAction_ = nullptr; // its place in the bar
    int running_ = 0;
};

} // namespace quenby
