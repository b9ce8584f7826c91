// Notices when a transfer stands still: no byte either way for a given time.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <functional>

namespace quenby {

class StallWatch {
public:
    // unacknowledged answers how many bytes wait to be taken by the other side: a slow one empties our buffers long
    // after we have filled them, and while it does the transfer is alive. A limit of 0 means for ever.
    StallWatch(std::chrono::milliseconds limit, std::function<qint64()> unacknowledged, std::function<void()> stalled);

    void start();
    void stop() { timer_.stop(); }
    // Bytes have moved. Cheap enough to be called for every piece.
    void noteProgress() { hasMoved_ = true; }

private:
    void look();

    const std::chrono::milliseconds limit_;
    std::function<qint64()> unacknowledged_;
    std::function<void()> stalled_;
    QTimer timer_;
    QElapsedTimer sinceProgress_;
    bool hasMoved_ = false;
    qint64 lastUnacknowledged_ = 0;
};

} // namespace quenby
