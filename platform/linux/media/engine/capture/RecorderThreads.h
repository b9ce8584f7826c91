// Recorders and the threads that they work on.
//
// Threads: the main thread. The end of this object waits, for ten seconds at most, for the recordings that are still
// being brought to their end.
#pragma once

#include "platform/linux/media/engine/capture/Recorder.h"

#include <QThread>

#include <memory>
#include <vector>

namespace quenby {

class RecorderThreads {
public:
    RecorderThreads() = default;
    ~RecorderThreads();
    RecorderThreads(const RecorderThreads&) = delete;
    RecorderThreads& operator=(const RecorderThreads&) = delete;

    // Lives on a thread of its own until it has retired and is idle: whoever asked for it has to retire it.
    Recorder* add(const CaptureOptions& options);

private:
    void remove(QThread* thread);

    std::vector<std::unique_ptr<QThread>> threads_;
    QObject context_;
};

} // namespace quenby
