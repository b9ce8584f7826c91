// Lets a screen reader meet the change list as a list, and its rows as items that can be pressed and shared.
#pragma once

namespace quenby {

// For every row and list from now on.
void makeRowsAccessible();

} // namespace quenby
