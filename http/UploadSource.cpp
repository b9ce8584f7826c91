#include "http/UploadSource.h"

#include "http/FileWindowDevice.h"

#include <QBuffer>

#include <sys/stat.h>

namespace quenby {
namespace {

// A view into bytes that it keeps alive.
class DataWindowDevice final : public QBuffer {
public:
    DataWindowDevice(QByteArray whole, quint64 offset, quint64 length)
        : whole_(std::move(whole))
        , view_(QByteArray::fromRawData(whole_.constData() + offset, static_cast<qsizetype>(length))) {
        setBuffer(&view_);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

private:
    const QByteArray whole_;
    QByteArray view_;
};

Error unreadable(const QString& what) {
    return Error(URLErrorCode::requestBodyUnreadable,
                 {{errorKey::reason,
                   QStringLiteral("The file to upload %1. Open a regular file for reading and try again.").arg(what)}});
}

} // namespace

UploadSource::UploadSource(const QByteArray& data)
    : source_(data)
    , fullLength_(static_cast<quint64>(data.size())) {}

UploadSource::UploadSource(std::shared_ptr<QFile> file) {
    struct stat facts = {};
    if (!file || !file->isReadable() || file->handle() < 0)
        error_ = unreadable(QStringLiteral("is not open for reading"));
    else if (::fstat(file->handle(), &facts) != 0)
        error_ = unreadable(QStringLiteral("cannot be examined (%1)").arg(qt_error_string(errno)));
    else if (!S_ISREG(facts.st_mode))
        error_ = unreadable(QStringLiteral("is a folder or a device"));
    else
        fullLength_ = static_cast<quint64>(facts.st_size);
    source_ = std::move(file);
}

std::shared_ptr<QIODevice> UploadSource::openWindow(quint64 offset, quint64 length) const {
    Q_ASSERT(offset <= fullLength_ && length <= fullLength_ - offset);
    if (const auto* data = std::get_if<QByteArray>(&source_))
        return std::make_shared<DataWindowDevice>(*data, offset, length);
    return std::make_shared<FileWindowDevice>(std::get<std::shared_ptr<QFile>>(source_), static_cast<qint64>(offset),
                                              static_cast<qint64>(length));
}

} // namespace quenby
