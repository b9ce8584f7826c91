#include "app/statusitem/MenuPlace.h"

#include <QMenu>

namespace quenby {

QPoint menuPlaceUnder(const QWidget& button, const QMenu& menu) {
    const QWidget& window = *button.window();
    const QRect place(button.mapToGlobal(QPoint(0, 0)), button.size());
    const bool isAtRight = button.mapTo(&window, button.rect().center()).x() > window.width() / 2;
    const int x = isAtRight ? place.right() + 1 - menu.sizeHint().width() : place.left();
    return {x, place.bottom() + 1};
}

} // namespace quenby
