// Recordings that a killed program has left: they play up to their last seconds. Threads: any.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace quenby {

// Gives the unfinished movies in the folder their names; the paths, oldest first. Empty ones are removed. Nothing that
// exists is replaced.
QList<QByteArray> recoverInterruptedRecordings(const QString& folder);

} // namespace quenby
