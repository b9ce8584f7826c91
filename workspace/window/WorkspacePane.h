// What the workspace window shows while somebody is signed in: the toolbar, the tabs, and the side panel, which stands
// beside the page when there is room for both. A narrow window belongs to the page; there the panel comes over it when
// it is asked for, and what is kept of it stays as it is.
//
// Threads: the main thread. The defaults outlive it.
#pragma once

#include <QWidget>

class QLabel;
namespace quenby {

class AccountView;
class Defaults;
class PaneSplitter;
class SidePanel;
class WorkspaceToolBar;

class WorkspacePane final : public QWidget {
    Q_OBJECT

public:
    explicit WorkspacePane(Defaults& defaults, QWidget* parent = nullptr);
    ~WorkspacePane() override;

    AccountView& accountView() const;
    WorkspaceToolBar& toolBar() const { return *toolBar_; }
    // Takes it over.
    void setTabs(QWidget* tabs);
    // Below the uploads. Takes it over.
    void setDownloadsView(QWidget* view);
    // Empty: none. It never covers what the pointer is at.
    void showAddress(const QString& address);
    // Of everything, only the tabs' current page is left.
    void setPageAlone(bool isAlone);
    void focusFirst();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeSidePanel();
    void showSidePanel();
    void keepSidePanel();
    void keepSidePanelWidth();
    void placeAddress();

    Defaults& defaults_;
    WorkspaceToolBar* toolBar_;
    PaneSplitter* splitter_;
    QWidget* middle_; // where the tabs are
    SidePanel* sidePanel_;
    QLabel* address_;
    QWidget* tabs_ = nullptr;
    int sidePanelWidth_;
    bool isNarrow_ = false;
    bool isPageAlone_ = false;
};

} // namespace quenby
