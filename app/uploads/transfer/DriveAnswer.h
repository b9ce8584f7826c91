// What the Drive said with an error, whichever way the error came here: as the Drive's own error object, or as the body
// of a piece of an upload that was refused.
#pragma once

#include "core/Error.h"

#include <QStringList>

namespace quenby {

// The HTTP status, or what stands for it in a reply that has another; below HTTP, in the status domain, the network's
// code. 0: none is known.
qint64 driveStatusOf(const Error& error);

// The short names of what stands in the way, such as "quotaExceeded", in the Drive's order.
QStringList driveReasonsOf(const Error& error);

} // namespace quenby
