#include "platform/linux/media/engine/capture/MovieOnDisk.h"

#include "core/FileMoves.h"
#include "platform/CaptureSession.h"
#include "platform/linux/media/engine/capture/MoviePieces.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr mode_t onlyTheUser = 0600; // who else may see the user's screen is for the user to say

QByteArray folderOf(const QByteArray& path) { return path.first(path.lastIndexOf('/') + 1); }

Error posixError(int code, const QString& reason) {
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

QString words(int code) { return QString::fromLocal8Bit(std::strerror(code)); }

} // namespace

Result<std::unique_ptr<MovieOnDisk>> MovieOnDisk::create(const QByteArray& path) {
    const int descriptor =
        ::open(unfinishedMoviePath(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, onlyTheUser);
    if (descriptor >= 0)
        return std::unique_ptr<MovieOnDisk>(new MovieOnDisk(path, descriptor));
    const int code = errno;
    if (code == EEXIST)
        return posixError(code, QStringLiteral("A recording of that name is being written already. Wait a second and "
                                               "try again."));
    return posixError(code, QStringLiteral("The recording cannot be written to the folder %1: %2. Make sure that the "
                                           "folder exists and can be written to, and try again.")
                                .arg(QString::fromLocal8Bit(folderOf(path)), words(code)));
}

MovieOnDisk::MovieOnDisk(QByteArray path, int descriptor)
    : path_(std::move(path))
    , hiddenPath_(unfinishedMoviePath(path_))
    , descriptor_(descriptor) {}

MovieOnDisk::~MovieOnDisk() {
    ::close(descriptor_);
    if (!isKept_)
        ::unlink(hiddenPath_.constData());
}

std::optional<qint64> MovieOnDisk::freeSpace() const {
    struct statvfs disk {};
    if (::fstatvfs(descriptor_, &disk) != 0)
        return std::nullopt;
    return static_cast<qint64>(disk.f_bavail) * static_cast<qint64>(disk.f_frsize);
}

bool MovieOnDisk::startAgain() { return ::ftruncate(descriptor_, 0) == 0 && ::lseek(descriptor_, 0, SEEK_SET) == 0; }

bool MovieOnDisk::keepWholePieces() {
    const qint64 length = playableLength(descriptor_);
    return length > 0 && ::ftruncate(descriptor_, length) == 0;
}

Result<QByteArray> MovieOnDisk::giveName() {
    isKept_ = true;
    ::fdatasync(descriptor_); // a disk that fails now tells so with the rename, or has nothing to tell
    if (renameWithoutReplacing(hiddenPath_, path_))
        return path_;
    if (errno == EEXIST) {
        const QByteArray folder = folderOf(path_);
        const QByteArray named = renameIntoFolder(hiddenPath_, folder, path_.sliced(folder.size()));
        if (!named.isEmpty())
            return named;
    }
    const int code = errno;
    return posixError(code, QStringLiteral("The recording could not get its name: %1. If it still exists, it lies at "
                                           "%2.")
                                .arg(words(code), QString::fromLocal8Bit(hiddenPath_)));
}

} // namespace quenby
