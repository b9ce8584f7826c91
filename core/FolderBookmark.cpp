#include "core/FolderBookmark.h"

#include <QCryptographicHash>
#include <QList>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace quenby {
namespace {

// Version, file system, device, inode, path, and the checksum of all those; separated by colons.
const QByteArray version("folder1");
constexpr qsizetype fieldCount = 6;

struct FolderIdentity {
    quint64 fileSystem = 0; // 0 when it has no identifier
    quint64 device = 0;
    quint64 inode = 0;
};

Error failure(int code, const QString& reason) { return Error(errorDomain::posix, code, {{errorKey::reason, reason}}); }

Error failure(int code) {
    return failure(code, QStringLiteral("The folder cannot be reached (%1). Choose it again.")
                             .arg(QString::fromLocal8Bit(std::strerror(code))));
}

Result<FolderIdentity> identityOf(const QByteArray& path) {
    struct ::stat about {};
    struct ::statvfs fileSystem {};
    if (::stat(path.constData(), &about) != 0 || ::statvfs(path.constData(), &fileSystem) != 0)
        return failure(errno);
    if (!S_ISDIR(about.st_mode))
        return failure(ENOTDIR);
    return FolderIdentity{fileSystem.f_fsid, about.st_dev, about.st_ino};
}

// Device numbers of some file systems are given out anew at each start of the computer, and identifiers of others are
// made from the device's number: one of the two has to be the same. Network file systems have neither.
bool isSameDevice(const FolderIdentity& one, const FolderIdentity& other) {
    if (one.device == other.device)
        return true;
    if (one.fileSystem != 0 || other.fileSystem != 0)
        return one.fileSystem == other.fileSystem;
    return major(one.device) == 0 && major(other.device) == 0;
}

QByteArray checksum(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().left(16);
}

} // namespace

Result<QByteArray> makeFolderBookmark(const QByteArray& path) {
    if (!path.startsWith('/') || path.contains('\0'))
        return failure(EINVAL, QStringLiteral("A folder's path begins with a slash. Choose another folder."));
    const auto identity = identityOf(path);
    if (!identity)
        return identity.error();
    const QList<QByteArray> fields{version, QByteArray::number(identity->fileSystem, 16),
                                   QByteArray::number(identity->device, 16), QByteArray::number(identity->inode, 16),
                                   path.toBase64(QByteArray::Base64UrlEncoding)};
    const QByteArray body = fields.join(':');
    return QByteArray(body + ':' + checksum(body));
}

Result<QByteArray> resolveFolderBookmark(const QByteArray& bookmark) {
    const QList<QByteArray> fields = bookmark.split(':');
    if (fields.size() != fieldCount || fields.first() != version ||
        checksum(bookmark.left(bookmark.lastIndexOf(':'))) != fields.last())
        return failure(EINVAL, QStringLiteral("The bookmark of the folder is damaged. Choose the folder again."));
    const QByteArray path = QByteArray::fromBase64(fields.at(4), QByteArray::Base64UrlEncoding);
    const auto found = identityOf(path);
    if (!found)
        return found.error();
    const FolderIdentity known{fields.at(1).toULongLong(nullptr, 16), fields.at(2).toULongLong(nullptr, 16),
                               fields.at(3).toULongLong(nullptr, 16)};
    if (found->inode != known.inode || !isSameDevice(*found, known))
        return failure(ESTALE, QStringLiteral("Another folder lies there now. Choose the folder again."));
    return path;
}

} // namespace quenby
