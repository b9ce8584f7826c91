// The source of a request's body, read piece by piece as the network takes it.
#pragma once

#include "http/URLRequest.h"

#include <QString>

#include <optional>

namespace quenby {

// A view of a request's body: the bytes are shared and the device is used, never copied. The device's position at
// construction is the body's start.
class RequestBody {
public:
    explicit RequestBody(const URLRequest& request);

    bool exists() const { return exists_; }
    qint64 length() const { return length_; } // -1 when it is not known before the end
    // Bytes read, 0 at the end, -1 when the source failed or ended early: failure() then says why. A source that has
    // more than it announced is read up to what it announced.
    qint64 read(char* buffer, qint64 size);
    qint64 offset() const { return offset_; } // bytes read
    // Back to an offset in the body; false when the source cannot.
    bool seek(qint64 offset);
    const QString& failure() const { return failure_; }

private:
    QByteArray bytes_;
    std::shared_ptr<QIODevice> device_;
    bool exists_;
    qint64 start_ = 0;
    qint64 length_ = 0;
    qint64 offset_ = 0;
    QString failure_;
};

} // namespace quenby
