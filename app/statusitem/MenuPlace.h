// Where a menu goes that a button opens.
#pragma once

#include <QPoint>

class QMenu;
class QWidget;

namespace quenby {

// Under the button, from it towards the middle of its window. On the desktop, in logical pixels, for QMenu::popup(),
// which keeps it on the screen. What the menu shows must be up to date: its width decides.
QPoint menuPlaceUnder(const QWidget& button, const QMenu& menu);

} // namespace quenby
