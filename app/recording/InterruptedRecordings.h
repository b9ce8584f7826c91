// Recordings that an earlier run of the program has left: it was killed, or ended while something was recorded. A good
// end leaves none. Threads: any.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace quenby {

// All movies in the folder, oldest first. Unfinished ones, which play up to their last seconds, get their names before;
// those that are too short to be played are removed. Nothing that exists is replaced.
QList<QByteArray> recoverInterruptedRecordings(const QString& folder);

} // namespace quenby
