#include "app/uploads/transfer/SourceRefusal.h"

#include "app/cli/Folders.h"

#include <cerrno>

#include <sys/stat.h>

namespace quenby {
namespace {

Error refusal(int code, const QString& reason) { return Error(errorDomain::posix, code, {{errorKey::reason, reason}}); }

} // namespace

Error openError(const QByteArray& path) {
    const int code = errno;
    struct stat status {};
    if (code == ENOENT && ::lstat(path.constData(), &status) == 0)
        return refusal(code, QStringLiteral("is a link to nothing; give the file it should lead to"));
    switch (code) {
    case ENOENT:
        return refusal(code, QStringLiteral("no such file; check the name"));
    case ENOTDIR:
        return refusal(code, QStringLiteral("a part of the path is no folder; check the name"));
    case ELOOP:
        return refusal(code, QStringLiteral("is a link that leads back to itself; give the file it should lead to"));
    case EACCES:
    case EPERM:
        return refusal(code, QStringLiteral("may not be read; change its permissions"));
    default:
        return fileError(code, QStringLiteral("can't open"), path);
    }
}

MaybeError refuseSpecialFile(mode_t mode) {
    if (S_ISREG(mode))
        return std::nullopt;
    if (S_ISDIR(mode))
        return refusal(EISDIR, QStringLiteral("is a folder; give the files in it"));
    if (S_ISFIFO(mode))
        return refusal(EINVAL, QStringLiteral("is a pipe, which has no size; save its contents to a file first"));
    if (S_ISSOCK(mode))
        return refusal(EINVAL, QStringLiteral("is a socket; only regular files can be uploaded"));
    return refusal(EINVAL, QStringLiteral("is a device; only regular files can be uploaded"));
}

} // namespace quenby
