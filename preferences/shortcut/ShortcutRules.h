// Which keys may be a global shortcut. No other program hears of them any more while they are bound, so that what
// people need everywhere is refused.
//
// Pure functions. Threads: the main thread, like QKeySequence.
#pragma once

#include <QKeySequence>
#include <QString>
#include <QVariant>

namespace quenby {

// Why the chord cannot be one: a sentence for people that says what to do; empty when it can. In a keyboard's layout
// without Latin letters, the Latin one of the same key decides as well: that is what programs take for "Ctrl+C" there.
QString refusalOfShortcut(QKeyCombination chord, Qt::Key latinKey = Qt::Key_unknown);

// The first chord of a stored setting; empty when the value is none, or one that would be refused.
QKeySequence storedShortcut(const QVariant& value);
// How it is stored.
QVariant storedForm(const QKeySequence& keys);

} // namespace quenby
