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

} // namespace

bool renameWithoutReplacing(const QByteArray& from, const QByteArray& to) {
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // A file system that can't do it in one step: a hard link is never made over anything.
    return ::link(from.constData(), to.constData()) == 0 && ::unlink(from.constData()) == 0;
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
