// Tells when a disk becomes full. No system tells that by itself, so it is looked at each second while a recording
// grows.
#pragma once

#include <QTimer>

#include <functional>
#include <optional>

namespace quenby {

// Threads: one, with an event loop.
class FreeSpaceWatch {
public:
    using FreeSpace = std::function<std::optional<qint64>()>; // bytes

    FreeSpaceWatch(FreeSpace freeSpace, qint64 least, std::function<void()> full);

    bool isFull() const;
    void start() { timer_.start(); }
    void stop() { timer_.stop(); }

private:
    const FreeSpace freeSpace_;
    const qint64 least_;
    QTimer timer_;
};

} // namespace quenby
