// How a tab bar behaves.
#pragma once

namespace quenby {

struct TabBarOptions {
    enum class Style { Aqua };
    enum class TearOff { alphaWindow = 0 }; // tabs never leave the bar

    Style style = Style::Aqua;
    bool onlyShowCloseOnHover = true;
    bool canCloseOnlyTab = false;
    bool disableTabClose = false;
    bool allowBackgroundClosing = true; // also of tabs that are not selected
    bool hideForSingleTab = false;
    bool addTabButton = true;
    int tabMinWidth = 1;       // px
    int tabMaxWidth = 280;     // px
    int tabOptimumWidth = 200; // px, while there is room; the bar's widths when tabs are not sized to fit
    bool tabSizeToFit = false; // as wide as the title
    TearOff tearOffStyle = TearOff::alphaWindow;
    bool useOverflowMenu = true; // for tabs that have no room, instead of arrows
    bool automaticallyAnimates = true;
    bool allowsScrubbing = true; // dragging over the tabs with the middle button, or the wheel, selects them in passing
};

} // namespace quenby
