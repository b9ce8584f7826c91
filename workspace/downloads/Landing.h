// A file that has arrived gets its place and its name, and a name it has only when it is whole.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"

#include <QByteArray>

namespace quenby {

struct Landing {
    QByteArray arrived;      // the whole file, under a name of its own
    QByteArray destination;  // absolute
    bool mayReplace = false; // else the next free name beside it is taken
};

// On a thread of its own: a disk may be slow, and another disk means that the bytes are copied. The path that the file
// got, or why it got none (errorDomain::posix, with a sentence); then it is still where it arrived.
CompletionTicket land(const Landing& landing, QObject* context,
                      std::function<void(const Result<QByteArray>& path)> done);

// A name for a file that arrives, in the folder; nobody else has it.
QByteArray arrivalPath(const QByteArray& folder);
// Removes what killed programs have left of arrivals in the folder. On a thread of its own.
void removeOldArrivals(const QByteArray& folder);

} // namespace quenby
