// The workspace's tab bar: a tab shows its DemoModel's title, icon or spinner, and a close button.
//
// Threads: the main thread. The models outlive their tabs. The bar decides nothing: it tells what the user wants. Of
// its base it uses the order of the tabs and which of them is current; what they look like, where they stand and what
// mouse and keys do is its own.
#pragma once

#include "workspace/tabbar/TabBarOptions.h"
#include "workspace/tabbar/TabLayout.h"
#include "workspace/tabbar/TabMotion.h"

#include <QBasicTimer>
#include <QPointer>
#include <QTabBar>

#include <unordered_map>

namespace quenby {

class BarButton;
class DemoModel;
struct TabLook;

class TabBar final : public QTabBar {
    Q_OBJECT

public:
    explicit TabBar(QWidget* parent = nullptr);
    ~TabBar() override;

    void configStyle(TabBarOptions::Style style);
    void configOnlyShowCloseOnHover(bool on);
    void configCanCloseOnlyTab(bool on);
    void configDisableTabClose(bool on);
    void configAllowBackgroundClosing(bool on);
    void configHideForSingleTab(bool on);
    void configAddTabButton(bool on);
    void configTabMinWidth(int px);
    void configTabMaxWidth(int px);
    void configTabOptimumWidth(int px);
    void configTabSizeToFit(bool on);
    void configTearOffStyle(TabBarOptions::TearOff style);
    void configUseOverflowMenu(bool on);
    void configAutomaticallyAnimates(bool on);
    void configAllowsScrubbing(bool on);
    const TabBarOptions& options() const { return options_; }

    // A tab at the end; its index. The current tab stays the current one unless it is the first.
    int addModel(DemoModel& model);
    // removeTab() of the base takes a tab away again.
    DemoModel* modelAt(int index) const;
    int indexOf(const DemoModel& model) const; // -1: none

    // Whether the options let the user close it.
    bool mayClose(int index) const;
    // Where it stands, or slides to; null while there is no room for it.
    QRect frameOf(int index) const { return layout_.tab(index); }
    // Where its parts are, as it looks now. Null for what is not shown.
    TabParts partsOf(int index) const;
    bool isSpinning() const { return spinner_.isActive(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // The add button, or a double click on the bar's empty part.
    void addTabRequested();
    // By the close button, a middle click, the context menu or a key. Never for the only tab when that may not be
    // closed.
    void closeRequested(int index);
    void closeOthersRequested(int index);
    void reloadRequested(int index);
    // Files or texts were dropped on a tab, or on the empty part (index -1); the text is one address.
    void filesDropped(int index, const QList<QByteArray>& paths);
    void addressDropped(int index, const QUrl& url);

protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override;
    void tabInserted(int index) override;
    void tabRemoved(int index) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // What lies under the pointer.
    struct Hover {
        int tab = -1;
        bool isOnClose = false;
        bool operator==(const Hover&) const = default;
    };
    // A button of the mouse that is held down.
    struct Press {
        enum class Kind { none, select, close, middle, scrub, drag };
        Kind kind = Kind::none;
        QPointer<DemoModel> model;
        QPoint at;
        int grip = 0;    // from the dragged tab's leading edge to the pointer
        int leading = 0; // of the dragged tab
    };

    // TabBar.cpp: the options, the models, where everything stands
    template <typename Value>
    void config(Value TabBarOptions::*option, Value value);
    enum class Arrival { slides, jumps };
    void arrange(Arrival arrival);
    std::unordered_map<const void*, QRect> places() const;
    void placeButtons();
    TabRoom room() const;
    bool animates() const;
    void refreshModel(const DemoModel& model);
    void tellName(int index);

    // TabBarPainting.cpp: what is seen, and when it is painted again
    TabLook lookOf(int index) const;
    QRect seenFrame(int index) const;
    void updateTab(int index);
    void updateSpinner();
    QRect spinnerPlace(int index) const;

    // TabBarInput.cpp: mouse and keys
    void hoverAt(QPoint point);
    void setHover(const Hover& hover);
    void beginDrag(QPoint point);
    void dragTo(QPoint point);
    void carryOn();
    void endPress();
    void scrubTo(QPoint point);
    void step(int by);
    void requestClose(int index);
    bool showToolTip(QPoint point, QPoint globalPoint);

    // TabBarDrops.cpp: what is dragged in from elsewhere
    void dropTargetIs(int index);

    TabBarOptions options_;
    TabLayout layout_;
    TabMotion motion_;
    std::unordered_map<const void*, QRect> places_; // of the shown tabs, by model, and the add button
    QList<DemoModel*> watched_;                     // in tab order; only to know which model a removed tab had
    DemoModel* arriving_ = nullptr;                 // its tab is being made
    BarButton* addButton_;
    BarButton* overflowButton_;
    Hover hover_;
    QPoint pointer_{-1, -1}; // outside at first
    Press press_;
    int carryBy_ = 0;
    QBasicTimer carries_;
    int wheelTurn_ = 0;   // what is left of the last turns
    QBasicTimer spinner_; // one for all tabs
    int spinnerStep_ = 0;
    bool isFocusByKey_ = false; // only then it is to be seen where the keyboard is
    bool isSeen_ = false;       // a minimised window's bar is not
    int dropTarget_ = -1;
    QBasicTimer dropSelects_;
};

} // namespace quenby
