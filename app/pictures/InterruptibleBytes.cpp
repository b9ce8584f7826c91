#include "app/pictures/InterruptibleBytes.h"

#include <algorithm>
#include <cstring>

namespace quenby {

InterruptibleBytes::InterruptibleBytes(QByteArray bytes, QDeadlineTimer deadline, const std::atomic<bool>& isGivenUp)
    : bytes_(std::move(bytes))
    , deadline_(deadline)
    , isGivenUp_(isGivenUp) {
    // A buffer between would let a decoder go on after the end of our patience.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool InterruptibleBytes::seek(qint64 position) {
    if (position < 0 || position > bytes_.size() || !QIODevice::seek(position))
        return false;
    next_ = position;
    return true;
}

qint64 InterruptibleBytes::readData(char* data, qint64 most) {
    wasInterrupted_ = wasInterrupted_ || isGivenUp_ || deadline_.hasExpired();
    if (wasInterrupted_)
        return -1;
    const qint64 length = std::min<qint64>(most, bytes_.size() - next_);
    std::memcpy(data, bytes_.constData() + next_, static_cast<size_t>(length));
    next_ += length;
    return length;
}

} // namespace quenby
