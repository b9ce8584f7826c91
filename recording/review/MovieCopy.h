// Copies a recording to the place that the user chose: under its name it is whole or not there, and it replaces
// nothing.
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>

namespace quenby {

struct MovieCopyResult {
    enum class End { copied, movieGone, stopped, failed };

    End end = End::failed;
    QString reason; // when it failed: a sentence for people, what to do included
};

// Takes as long as the disks do. Absolute paths, as bytes. Threads: any; another one stops it.
MovieCopyResult copyMovie(const QByteArray& movie, const QByteArray& destination, const std::atomic_bool& isStopped);

} // namespace quenby
