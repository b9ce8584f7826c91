#include "app/uploads/transfer/SourceFile.h"

#include "app/cli/Folders.h"
#include "app/cli/OwnedDescriptor.h"

#include <algorithm>
#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace quenby {
namespace {

Error refusal(int code, const QString& reason) { return Error(errorDomain::posix, code, {{errorKey::reason, reason}}); }

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

// The error for what is not a regular file; nothing for what is.
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

} // namespace

bool SourceFile::State::operator==(const State& other) const {
    return size == other.size && modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec;
}

SourceFile::State SourceFile::stateOf(const struct stat& status) { return {status.st_size, status.st_mtim}; }

Result<SourceFile> SourceFile::open(const QByteArray& path) {
    // Looked at before it is opened, because opening a device can have effects; and after, because it may have been
    // replaced in between.
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return openError(path);
    if (const auto refused = refuseSpecialFile(status.st_mode))
        return *refused;
    OwnedDescriptor descriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
        return openError(path);
    if (const auto refused = refuseSpecialFile(status.st_mode))
        return *refused;

    SourceFile source;
    source.path_ = path;
    source.state_ = stateOf(status);
    source.handle_ = std::make_shared<QFile>();
    if (!source.handle_->open(descriptor.get(), QIODevice::ReadOnly | QIODevice::Unbuffered,
                              QFileDevice::AutoCloseHandle))
        return fileError(EIO, QStringLiteral("can't read"), path);
    descriptor.release();
    return source;
}

QString titleOfPath(const QByteArray& path) { return QString::fromUtf8(lastComponent(path)); }

bool SourceFile::isUnchanged() const {
    struct stat status {};
    return ::fstat(handle_->handle(), &status) == 0 && stateOf(status) == state_;
}

Result<FolderListing> filesInFolder(const QByteArray& path) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.constData()), &::closedir);
    if (!folder)
        return openError(path);
    FolderListing listing;
    while (const dirent* entry = ::readdir(folder.get())) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        const QByteArray file = path.endsWith('/') ? QByteArray(path + name) : QByteArray(path + '/' + name);
        struct stat status {};
        if (::stat(file.constData(), &status) == 0 && S_ISREG(status.st_mode))
            listing.files.append(file);
        else
            ++listing.skipped;
    }
    std::sort(listing.files.begin(), listing.files.end());
    return listing;
}

bool isFolder(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

qint64 sizeOnDisk(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

} // namespace quenby
