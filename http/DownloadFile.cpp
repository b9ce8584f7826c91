#include "http/DownloadFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace quenby {
namespace {

QString temporaryName() {
    static std::atomic<quint32> counter = 0;
    return QString::asprintf("gtmhttpfetcher_%u_%u", ++counter, QRandomGenerator::global()->generate());
}

int openNew(const QString& path) {
    return ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

} // namespace

Result<std::unique_ptr<DownloadFile>> DownloadFile::create(const QString& destination) {
    const QString name = temporaryName();
    QString path = QFileInfo(destination).absoluteDir().filePath(name);
    int descriptor = openNew(path);
    if (descriptor < 0) {
        path = QDir::temp().filePath(name);
        descriptor = openNew(path);
    }
    if (descriptor >= 0)
        return std::unique_ptr<DownloadFile>(new DownloadFile(destination, path, descriptor));
    const int cause = errno;
    return Error(
        FetcherErrorCode::fetchCouldNotBegin,
        {{errorKey::reason,
          QStringLiteral("No temporary file can be made for %1: %2.").arg(destination, qt_error_string(cause))}});
}

DownloadFile::DownloadFile(QString destination, QString temporaryPath, int descriptor)
    : destination_(std::move(destination))
    , temporaryPath_(std::move(temporaryPath))
    , descriptor_(descriptor) {}

DownloadFile::~DownloadFile() {
    closeDescriptor();
    if (!temporaryPath_.isEmpty())
        QFile::remove(temporaryPath_);
}

MaybeError DownloadFile::truncate() {
    if (std::exchange(isEmpty_, true))
        return std::nullopt;
    if (::ftruncate(descriptor_, 0) != 0 || ::lseek(descriptor_, 0, SEEK_SET) != 0)
        return writeError(errno);
    return std::nullopt;
}

MaybeError DownloadFile::write(QByteArrayView data) {
    isEmpty_ = false;
    while (!data.isEmpty()) {
        const ssize_t written = ::write(descriptor_, data.data(), static_cast<size_t>(data.size()));
        if (written < 0 && errno != EINTR)
            return writeError(errno);
        if (written > 0)
            data = data.sliced(written);
    }
    return std::nullopt;
}

// Not flushed to the disk first: after a crash of the whole machine a download is repeated, and waiting for the disk
// would cost every download more than that.
MaybeError DownloadFile::moveIntoPlace() {
    int cause = closeDescriptor();
    if (cause == 0) {
        const QByteArray from = QFile::encodeName(temporaryPath_);
        if (std::rename(from.constData(), QFile::encodeName(destination_).constData()) != 0)
            cause = errno;
    }
    if (cause == 0) {
        temporaryPath_.clear();
        return std::nullopt;
    }
    return Error(
        errorDomain::posix, cause,
        {{errorKey::reason,
          QStringLiteral("The download cannot be put in place as %1: %2.").arg(destination_, qt_error_string(cause))}});
}

int DownloadFile::closeDescriptor() {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor >= 0 && ::close(descriptor) != 0 ? errno : 0;
}

Error DownloadFile::writeError(int cause) const {
    return Error(errorDomain::httpStatus, fileHandleErrorCode,
                 {{errorKey::reason, QStringLiteral("The download cannot be written to %1 (temporary file %2): %3.")
                                         .arg(destination_, temporaryPath_, qt_error_string(cause))}});
}

} // namespace quenby
