// The server's wall clock, which a test can set wrong.
#pragma once

#include <QDateTime>

#include <atomic>
#include <chrono>

namespace quenby::localdrive {

// Threads: any.
class ServerClock {
public:
    QDateTime now() const { return QDateTime::currentDateTimeUtc().addSecs(skewSeconds_); }
    // How far ahead of the machine's clock this one goes from here on; negative: behind.
    void skew(std::chrono::seconds by) { skewSeconds_ = by.count(); }

private:
    std::atomic<qint64> skewSeconds_ = 0;
};

} // namespace quenby::localdrive
