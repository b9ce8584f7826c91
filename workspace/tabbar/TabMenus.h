// The tab bar's menus. Each deletes itself when it closes; a tab that goes meanwhile is not acted upon.
#pragma once

class QMenu;

namespace quenby {

class TabBar;

// Of one tab, or of the empty part (index -1).
QMenu* makeTabMenu(TabBar& bar, int index);
// All tabs, the current one marked.
QMenu* makeOverflowMenu(TabBar& bar);

} // namespace quenby
