#include "core/FileMoves.h"

#include "core/SafeFileName.h"

#include <cerrno>

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr int mostNames = 10000; // tries for a name that is not taken

QByteArray pathIn(const QByteArray& folder, const QByteArray& name) {
    if (folder == ".")
        return name;
    return folder.endsWith('/') ? QByteArray(folder + name) : QByteArray(folder + '/' + name);
}

// Where there are no hard links either, as on memory cards: the name is taken by an empty file first, which then goes.
bool renameOverOwnFile(const QByteArray& from, const QByteArray& to) {
    const int own = ::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (own < 0)
        return false;
    ::close(own);
    if (::rename(from.constData(), to.constData()) == 0)
        return true;
    const int error = errno;
    ::unlink(to.constData());
    errno = error;
    return false;
}

} // namespace

bool renameWithoutReplacing(const QByteArray& from, const QByteArray& to) {
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // A file system that can't do it in one step: a hard link is never made over anything.
    if (::link(from.constData(), to.constData()) == 0)
        return ::unlink(from.constData()) == 0;
    return errno != EEXIST && errno != ENOENT && renameOverOwnFile(from, to);
}

QByteArray renameIntoFolder(const QByteArray& from, const QByteArray& folder, const QByteArray& name) {
    for (int number = 1; number <= mostNames; ++number) {
        const QByteArray path = pathIn(folder, numberedFileName(name, number));
        if (renameWithoutReplacing(from, path))
            return path;
        if (errno != EEXIST)
            return {};
    }
    return {};
}

} // namespace quenby
