// Which of the toolkit's keys a symbol of the keyboard's map is. Pure. Threads: any.
#pragma once

#include <Qt>

#include <xkbcommon/xkbcommon.h>

namespace quenby {

// As the toolkit itself tells keys: letters are capitals, and a key of the number pad is the one that it looks like.
// Qt::Key_unknown for what is no part of a shortcut.
Qt::Key keyOfSymbol(xkb_keysym_t symbol);
// What the toolkit marks by Qt::KeypadModifier.
bool isOnKeypad(xkb_keysym_t symbol);
// As keyOfSymbol() has them, whoever wrote the shortcut down.
Qt::Key capital(Qt::Key key);

} // namespace quenby
