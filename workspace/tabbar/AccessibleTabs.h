// Lets a screen reader meet the tab bar as a list of tabs, which can be selected and closed, and its two buttons.
#pragma once

namespace quenby {

// For every bar from now on.
void makeTabsAccessible();

} // namespace quenby
