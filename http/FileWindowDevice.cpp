#include "http/FileWindowDevice.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace quenby {

FileWindowDevice::FileWindowDevice(std::shared_ptr<QFile> file, qint64 offset, qint64 length)
    : file_(std::move(file))
    , offset_(offset)
    , length_(length) {
    Q_ASSERT(offset >= 0 && length >= 0);
    QIODevice::open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool FileWindowDevice::seek(qint64 position) {
    if (position > length_ || !QIODevice::seek(position))
        return false;
    position_ = position;
    return true;
}

qint64 FileWindowDevice::readData(char* data, qint64 maxSize) {
    const qint64 wanted = std::min(maxSize, length_ - position_);
    if (wanted <= 0)
        return 0;
    ssize_t count = 0;
    do {
        count = ::pread(file_->handle(), data, static_cast<size_t>(wanted), offset_ + position_);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        setErrorString(QStringLiteral("The file could not be read at byte %1: %2. Check that it is still there and try "
                                      "again.")
                           .arg(offset_ + position_)
                           .arg(qt_error_string(errno)));
        return -1;
    }
    if (count == 0) {
        setErrorString(QStringLiteral("The file became shorter while it was sent: it ends before byte %1. Try again "
                                      "when nothing writes to it any more.")
                           .arg(offset_ + position_));
        return -1;
    }
    position_ += count;
    return count;
}

} // namespace quenby
