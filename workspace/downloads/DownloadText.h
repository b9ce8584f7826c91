// How far a download is, in words.
#pragma once

#include "workspace/downloads/Arrival.h"

#include <QString>

#include <optional>

namespace quenby {

struct DownloadProgress {
    Arrival::State state = Arrival::State::running;
    qint64 received = 0;
    qint64 total = -1;                    // not known
    std::optional<qint64> bytesPerSecond; // not known
    QString reason;                       // of a failure
};

// "3.2 MB of 10 MB, 6 seconds left"
QString downloadText(const DownloadProgress& progress);
// 0 to 100; -1: not known.
int downloadPercent(const DownloadProgress& progress);

} // namespace quenby
