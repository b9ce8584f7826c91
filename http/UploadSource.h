// What an upload sends: bytes in memory or an open file. Opens windows of it, each a device of its own that copies
// nothing; the bytes and the file live as long as any window.
//
// The full length is found once, when the source is made, and stays: a file that grows afterwards is sent as long as
// it was announced, one that shrinks makes its windows fail.
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QFile>
#include <QIODevice>

#include <memory>
#include <variant>

namespace quenby {

class UploadSource {
public:
    explicit UploadSource(const QByteArray& data);
    // A regular file, open for reading. It is not closed here.
    explicit UploadSource(std::shared_ptr<QFile> file);

    quint64 fullLength() const { return fullLength_; }
    // Why nothing can be sent, from the start: no file, not open, not a regular file.
    const MaybeError& error() const { return error_; }

    // Both within the full length.
    std::shared_ptr<QIODevice> openWindow(quint64 offset, quint64 length) const;

private:
    std::variant<QByteArray, std::shared_ptr<QFile>> source_;
    quint64 fullLength_ = 0;
    MaybeError error_;
};

} // namespace quenby
