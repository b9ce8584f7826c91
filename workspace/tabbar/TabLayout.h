// Where everything in the tab bar stands: pure geometry, in the bar's logical pixels.
//
// The tabs stand side by side from the bar's leading edge, the add button behind the last of them. While there is room
// they are as wide as they wish; then the widest get narrower, down to where only an icon fits; then some tabs are not
// shown, and the overflow button stands behind the add button. The current tab is always shown.
#pragma once

#include <QRect>

#include <vector>

namespace quenby {

struct TabBarOptions;

struct TabRoom {
    QSize bar;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    int count = 0;
    int current = -1;   // -1: none
    int firstShown = 0; // as far as possible: which tab stands at the leading edge when there is no room for all
    std::vector<int> fitWidths; // of every tab's content; empty: the tabs are not sized to fit
};

class TabLayout {
public:
    TabLayout() = default;
    TabLayout(const TabBarOptions& options, const TabRoom& room);

    // Which tabs are shown: a run of them.
    int firstShown() const { return firstShown_; }
    int endShown() const { return firstShown_ + static_cast<int>(widths_.size()); }
    bool isShown(int index) const { return index >= firstShown() && index < endShown(); }
    bool overflows() const { return overflows_; }

    // Null for what is not shown.
    QRect tab(int index) const;
    QRect addButton() const { return addButton_; }
    QRect overflowButton() const { return overflowButton_; }
    int tabAt(QPoint point) const; // -1: none

    // From the leading edge, whatever the direction: a tab that is dragged along is placed by these.
    int leadingOf(int index) const;
    int widthOf(int index) const;
    int tabsBegin() const;
    int tabsEnd() const;
    QRect frame(int leading, int width) const;
    int fromLeading(int x) const;

    // The width at which all tabs are as wide as they wish.
    static int wishedWidth(const TabBarOptions& options, const TabRoom& room);
    // One tab and the buttons.
    static int leastWidth();

private:
    QRect buttonFrame(int leading) const;

    QSize bar_;
    Qt::LayoutDirection direction_ = Qt::LeftToRight;
    int firstShown_ = 0;
    std::vector<int> widths_;   // of the tabs that are shown
    std::vector<int> leadings_; // the same tabs'
    bool overflows_ = false;
    QRect addButton_;
    QRect overflowButton_;
};

// What stands in a tab besides its icon and title.
struct TabContent {
    bool hasCloseButton = false;
    bool isEdited = false;
    int badgeWidth = 0; // 0: none
};

// Null for what has no room or is not there. The close button goes first into the room, then the badge and the mark;
// the title gets what is left.
struct TabParts {
    QRect icon;
    QRect title;
    QRect editedMark;
    QRect badge;
    QRect closeButton;
};

TabParts tabParts(const QRect& frame, Qt::LayoutDirection direction, const TabContent& content);

// A tab as wide as this shows all of its title.
int tabFitWidth(int titleWidth, const TabContent& content);
constexpr int badgeHeight = 16;

} // namespace quenby
