#include "recording/review/MovieCopy.h"

#include "core/FileMoves.h"

#include <QFile>
#include <QRandomGenerator>

#include <cerrno>

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

using End = MovieCopyResult::End;

constexpr std::size_t copiedAtOnce = 4U << 20; // between two looks at whether to stop

class OpenFile {
public:
    explicit OpenFile(int descriptor)
        : descriptor_(descriptor) {}
    ~OpenFile() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    explicit operator bool() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }

private:
    const int descriptor_;
};

QByteArray folderOf(const QByteArray& path) { return path.first(std::max<qsizetype>(path.lastIndexOf('/'), 1)); }

bool exists(const QByteArray& path) {
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0;
}

QByteArray temporaryPath(const QByteArray& folder) {
    const quint64 number = QRandomGenerator::system()->generate64();
    return folder + "/.quenby-" + QByteArray::number(number, 16).rightJustified(16, '0') + ".part";
}

QString reasonFor(int error, const QByteArray& movie, const QByteArray& destination) {
    const QString folder = QFile::decodeName(folderOf(destination));
    const QString kept =
        QStringLiteral(" The recording itself stays at “%1” until Quenby ends.").arg(QFile::decodeName(movie));
    switch (error) {
    case EEXIST:
        return QStringLiteral("There is a file “%1” already, and it was not replaced. Save the recording under another "
                              "name.")
                   .arg(QFile::decodeName(destination)) +
               kept;
    case ENOSPC:
    case EDQUOT:
        return QStringLiteral("There is no room for it in “%1”. Free some space, or save it elsewhere.").arg(folder) +
               kept;
    case EACCES:
    case EPERM:
    case EROFS:
        return QStringLiteral("Files cannot be written in “%1”. Save it in another folder.").arg(folder) + kept;
    case ENOENT:
        return QStringLiteral("The folder “%1” is not there any more. Save it in another folder.").arg(folder) + kept;
    default:
        return QStringLiteral("It could not be saved in “%1” (%2). Try again, or save it elsewhere.")
                   .arg(folder, qt_error_string(error)) +
               kept;
    }
}

// Shares the blocks where the file system can. Below zero: errno tells why.
ssize_t copyPiece(int from, int to) {
    const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, copiedAtOnce, 0);
    const bool isImpossible =
        copied < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP);
    return isImpossible ? ::sendfile(to, from, nullptr, copiedAtOnce) : copied;
}

// The bytes are on the disk when it ends well; errno tells why it has not.
End copyBytes(int from, int to, const std::atomic_bool& isStopped) {
    ssize_t copied = 1;
    while (copied != 0) {
        if (isStopped)
            return End::stopped;
        copied = copyPiece(from, to);
        if (copied < 0 && errno != EINTR)
            return End::failed;
    }
    return ::fsync(to) == 0 ? End::copied : End::failed;
}

End copyUnderTemporaryName(int movie, const QByteArray& temporary, const std::atomic_bool& isStopped) {
    const OpenFile copy(::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    return copy ? copyBytes(movie, copy.descriptor(), isStopped) : End::failed;
}

} // namespace

MovieCopyResult copyMovie(const QByteArray& movie, const QByteArray& destination, const std::atomic_bool& isStopped) {
    const OpenFile source(::open(movie.constData(), O_RDONLY | O_CLOEXEC));
    if (!source && errno == ENOENT)
        return {End::movieGone, {}};
    if (!source)
        return {End::failed, QStringLiteral("The recording cannot be read (%1).").arg(qt_error_string(errno))};
    if (exists(destination)) // before a long copy that would be in vain
        return {End::failed, reasonFor(EEXIST, movie, destination)};
    const QByteArray temporary = temporaryPath(folderOf(destination));
    End end = copyUnderTemporaryName(source.descriptor(), temporary, isStopped);
    if (end == End::copied && !renameWithoutReplacing(temporary, destination))
        end = End::failed;
    const int error = errno;
    if (end != End::copied)
        ::unlink(temporary.constData());
    return {end, end == End::failed ? reasonFor(error, movie, destination) : QString()};
}

} // namespace quenby
