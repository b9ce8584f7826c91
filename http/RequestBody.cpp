#include "http/RequestBody.h"

#include <algorithm>
#include <cstring>

namespace quenby {

RequestBody::RequestBody(const URLRequest& request)
    : bytes_(request.body)
    , device_(request.bodyStream)
    , exists_(request.hasBody()) {
    if (!device_) {
        length_ = bytes_.size();
        return;
    }
    start_ = device_->pos();
    length_ = request.bodyLength;
    if (length_ < 0 && !device_->isSequential())
        length_ = std::max(qint64(0), device_->size() - start_);
}

qint64 RequestBody::read(char* buffer, qint64 size) {
    const qint64 wanted = length_ < 0 ? size : std::min(size, length_ - offset_);
    if (wanted == 0)
        return 0;
    if (!device_) {
        std::memcpy(buffer, bytes_.constData() + offset_, static_cast<size_t>(wanted));
        offset_ += wanted;
        return wanted;
    }
    const qint64 got = device_->read(buffer, wanted);
    if (got > 0) {
        offset_ += got;
        return got;
    }
    if (got == 0 && length_ < 0)
        return 0;
    failure_ = got < 0 ? QStringLiteral("The data to send cannot be read after %1 bytes: %2")
                             .arg(QString::number(offset_), device_->errorString())
                       : QStringLiteral("The data to send ended after %1 of %2 bytes; it has become shorter.")
                             .arg(offset_)
                             .arg(length_);
    return -1;
}

bool RequestBody::seek(qint64 offset) {
    if (offset == offset_)
        return true;
    if (device_ && (device_->isSequential() || !device_->seek(start_ + offset)))
        return false;
    offset_ = offset;
    return true;
}

} // namespace quenby
