#include "recording/session/MoviePlace.h"

#include "platform/CaptureSession.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace quenby {
namespace {

bool exists(const QByteArray& path) { return ::access(path.constData(), F_OK) == 0; }

Error cannotWrite(const QString& folder, int code) {
    return Error(errorDomain::posix, code,
                 {{errorKey::reason, QStringLiteral("No file can be made in the folder “%1” (%2). Make room, or "
                                                    "allow writing there, and try again.")
                                         .arg(folder, QString::fromLocal8Bit(std::strerror(code)))}});
}

} // namespace

Result<std::optional<QByteArray>> freeMoviePlace(const QString& folder, const QString& name) {
    const QByteArray reserved = QFile::encodeName(folder + QLatin1Char('/') + name);
    const QByteArray movie = reserved + ".mov";
    // Of two that ask at the same time, one gets the name. The file only shows that one can be made.
    const int descriptor = ::open(reserved.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        if (errno == EEXIST)
            return std::optional<QByteArray>();
        return cannotWrite(folder, errno);
    }
    ::close(descriptor);
    ::unlink(reserved.constData());
    if (exists(movie) || exists(unfinishedMoviePath(movie)))
        return std::optional<QByteArray>();
    return std::optional(movie);
}

} // namespace quenby
