#include "localdrive/store/FolderLock.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace quenby::localdrive {

Result<std::unique_ptr<FolderLock>> FolderLock::take(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder + QStringLiteral("/lock"));
    std::unique_ptr<FolderLock> lock(new FolderLock(::open(path.constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)));
    if (lock->descriptor_ >= 0 && ::flock(lock->descriptor_, LOCK_EX | LOCK_NB) == 0)
        return lock;
    const int code = errno;
    const QString reason =
        code == EWOULDBLOCK
            ? QStringLiteral("The Drive in %1 is in use by another process. Stop that one, or choose another folder.")
                  .arg(folder)
            : QStringLiteral("The data folder %1 can't be locked: %2. Choose a folder that you may write to.")
                  .arg(folder, qt_error_string(code));
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

FolderLock::~FolderLock() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

} // namespace quenby::localdrive
