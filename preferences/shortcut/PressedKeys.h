// What a key event says of a shortcut.
#pragma once

#include <QKeyCombination>

class QKeyEvent;

namespace quenby {

// The key as the layout has it, and what is held with it; key 0 for modifiers and locks alone.
QKeyCombination chordOf(const QKeyEvent& event);
// The letter that the pressed key makes in a Latin layout, when in the present one it makes none; else Key_unknown.
Qt::Key latinKeyOf(const QKeyEvent& event);
// What is held once the event is over.
Qt::KeyboardModifiers heldAfter(const QKeyEvent& event);

} // namespace quenby
