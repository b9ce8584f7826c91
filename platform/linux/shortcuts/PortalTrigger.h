// Keys in the words that desktops have agreed upon for them ("CTRL+ALT+q"). Pure. Threads: any.
#pragma once

#include <QKeySequence>
#include <QString>

namespace quenby {

// Of the first chord; empty when it has no words for a key.
QString portalTrigger(const QKeySequence& keys);

} // namespace quenby
