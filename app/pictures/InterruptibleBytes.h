// Bytes for a decoder that may not get to the end: a few of them can hold work for minutes (a JPEG of a hundred
// thousand scans), and a decoder that is at work stops for nothing but an end of its data.
//
// Threads: one at a time; the flag may be set by any.
#pragma once

#include <QDeadlineTimer>
#include <QIODevice>

#include <atomic>

namespace quenby {

class InterruptibleBytes final : public QIODevice {
public:
    // Open for reading. From the deadline on, or once the flag is set, every read fails. The flag outlives it.
    InterruptibleBytes(QByteArray bytes, QDeadlineTimer deadline, const std::atomic<bool>& isGivenUp);

    bool wasInterrupted() const { return wasInterrupted_; }
    qint64 size() const override { return bytes_.size(); }
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 most) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    const QByteArray bytes_;
    const QDeadlineTimer deadline_;
    const std::atomic<bool>& isGivenUp_;
    qint64 next_ = 0;
    bool wasInterrupted_ = false;
};

} // namespace quenby
