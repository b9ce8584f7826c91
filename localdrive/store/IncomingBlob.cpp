#include "localdrive/store/IncomingBlob.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace quenby::localdrive {

IncomingBlob::IncomingBlob(const QString& path)
    : file_(path) {}

Error IncomingBlob::failure(const char* action) const {
    const int code = errno;
    return Error(errorDomain::posix, code,
                 {{errorKey::reason, QStringLiteral("A content that was arriving can't be %1: %2. Check the disk's "
                                                    "free space.")
                                         .arg(QLatin1String(action), qt_error_string(code))}});
}

Result<void> IncomingBlob::open() {
    // Unbuffered: what append() has written is in the kernel's hands and survives a kill.
    if (!file_.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return failure("opened");
    file_.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    size_ = file_.size();
    return {};
}

Result<void> IncomingBlob::append(qint64 offset, QByteArrayView bytes) {
    if (offset < 0 || offset > size_)
        return Error(errorDomain::posix, EINVAL,
                     {{errorKey::reason, QStringLiteral("Bytes are missing before offset %1.").arg(offset)}});
    const QByteArrayView fresh = bytes.sliced(std::min(bytes.size(), size_ - offset));
    if (fresh.isEmpty())
        return {};
    if (!file_.seek(size_) || file_.write(fresh.data(), fresh.size()) != fresh.size()) {
        const Error error = failure("written");
        file_.resize(size_);
        return error;
    }
    if (hashed_ == size_) {
        md5_.addData(fresh);
        hashed_ += fresh.size();
    }
    size_ += fresh.size();
    return {};
}

Result<void> IncomingBlob::sync() {
    if (::fdatasync(file_.handle()) != 0)
        return failure("put on disk");
    return {};
}

Result<void> IncomingBlob::hashUpTo(qint64 end) {
    constexpr qint64 pieceSize = 256 * 1024;
    QByteArray piece(pieceSize, Qt::Uninitialized);
    if (!file_.seek(hashed_))
        return failure("read");
    while (hashed_ < end) {
        const qint64 got = file_.read(piece.data(), std::min(pieceSize, end - hashed_));
        if (got <= 0)
            return failure("read");
        md5_.addData(QByteArrayView(piece).first(got));
        hashed_ += got;
    }
    return {};
}

Result<StagedBlob> IncomingBlob::finish() {
    if (const Result<void> synced = sync(); !synced)
        return synced.error();
    if (const Result<void> hashed = hashUpTo(size_); !hashed)
        return hashed.error();
    return StagedBlob{file_.fileName(), size_, QString::fromLatin1(md5_.result().toHex())};
}

} // namespace quenby::localdrive
