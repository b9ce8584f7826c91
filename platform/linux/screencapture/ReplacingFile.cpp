#include "platform/linux/screencapture/ReplacingFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return ".";
    return slash == 0 ? QByteArray("/") : path.first(slash);
}

// On one line.
QString shown(const QByteArray& path) {
    QString text = QFile::decodeName(path);
    for (QChar& character : text)
        if (!character.isPrint())
            character = QChar::ReplacementCharacter;
    return text;
}

QString remedy(int code) {
    switch (code) {
    case ENOSPC:
    case EDQUOT:
        return QStringLiteral("Make room on that disk and try again.");
    case ENOENT:
    case ENOTDIR:
        return QStringLiteral("Make that folder, or choose another one.");
    default:
        return QStringLiteral("Choose another folder.");
    }
}

Error saveError(const QByteArray& path, int code) {
    return Error(errorDomain::posix, code,
                 {{errorKey::reason,
                   QStringLiteral("The picture could not be saved in %1: %2. %3")
                       .arg(shown(folderOf(path)), QString::fromLocal8Bit(std::strerror(code)), remedy(code))}});
}

} // namespace

ReplacingFile::ReplacingFile(const QByteArray& path)
    : path_(path) {}

ReplacingFile::~ReplacingFile() {
    file_.close();
    if (!hiddenPath_.isEmpty())
        ::unlink(hiddenPath_.constData());
}

Error ReplacingFile::error(int code) const { return saveError(path_, code); }

MaybeError ReplacingFile::open() {
    QByteArray hidden = folderOf(path_) + "/.quenby-XXXXXX";
    const int descriptor = ::mkostemp(hidden.data(), O_CLOEXEC);
    if (descriptor < 0)
        return error(errno);
    hiddenPath_ = hidden;
    // As anybody's new file, and not for the owner alone like a temporary one.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor, 0666 & ~mask);
    if (!file_.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return error(EIO);
    }
    return std::nullopt;
}

MaybeError ReplacingFile::commit() {
    errno = 0;
    const bool isWritten = file_.flush() && file_.error() == QFileDevice::NoError;
    const int code = errno;
    file_.close();
    if (!isWritten)
        return error(code != 0 ? code : EIO);
    if (::rename(hiddenPath_.constData(), path_.constData()) != 0)
        return error(errno);
    hiddenPath_.clear();
    return std::nullopt;
}

MaybeError whyNotWritable(const QByteArray& path) {
    if (::access(folderOf(path).constData(), W_OK | X_OK) != 0)
        return saveError(path, errno);
    struct stat about {};
    if (::stat(path.constData(), &about) == 0 && S_ISDIR(about.st_mode))
        return saveError(path, EISDIR);
    return std::nullopt;
}

MaybeError moveOver(const QByteArray& from, const QByteArray& to) {
    if (::rename(from.constData(), to.constData()) == 0)
        return std::nullopt;
    if (errno != EXDEV)
        return saveError(to, errno);
    ReplacingFile copy(to);
    if (auto error = copy.open())
        return error;
    const int descriptor = ::open(from.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return saveError(to, errno);
    QFile source;
    if (!source.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return saveError(to, EIO);
    }
    constexpr qint64 piece = 1 << 16; // bytes
    while (!source.atEnd()) {
        const QByteArray bytes = source.read(piece);
        errno = 0;
        if (bytes.isEmpty() || copy.device().write(bytes) != bytes.size())
            return saveError(to, errno != 0 ? errno : EIO);
    }
    if (auto error = copy.commit())
        return error;
    ::unlink(from.constData());
    return std::nullopt;
}

} // namespace quenby
