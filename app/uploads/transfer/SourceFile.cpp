#include "app/uploads/transfer/SourceFile.h"

#include "app/cli/Folders.h"
#include "app/cli/OwnedDescriptor.h"
#include "app/uploads/transfer/SourceRefusal.h"

#include <algorithm>
#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace quenby {
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
    source.facts_ = SourceFacts::of(status);
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
    return ::fstat(handle_->handle(), &status) == 0 && SourceFacts::of(status) == facts_;
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
