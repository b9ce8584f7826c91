#include "app/uploads/journal/JournalPlace.h"

#include "core/FileMoves.h"

#include <QDateTime>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr mode_t others = S_IRWXG | S_IRWXO;
const QByteArray rollbackSuffix = "-journal"; // the file with which SQLite undoes what was interrupted

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : path.first(slash);
}

// A new name in a folder survives a power failure only from here on.
void syncFolder(const QByteArray& folder) {
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

bool makeFolder(const QByteArray& folder) {
    if (::mkdir(folder.constData(), S_IRWXU) == 0) {
        syncFolder(folderOf(folder));
        return true;
    }
    if (errno == EEXIST || errno == EROFS)
        return ::access(folder.constData(), F_OK) == 0;
    return errno == ENOENT && makeFolder(folderOf(folder)) && ::mkdir(folder.constData(), S_IRWXU) == 0;
}

void takeFromOthers(const QByteArray& path) {
    struct stat about {};
    if (::stat(path.constData(), &about) == 0 && (about.st_mode & others) != 0)
        ::chmod(path.constData(), about.st_mode & S_IRWXU);
}

// Left where it is, it would be taken for the new file's.
void takeRollbackAlong(const QByteArray& from, const QByteArray& to) {
    const QByteArray rollback = from + rollbackSuffix;
    struct stat about {};
    if (::stat(rollback.constData(), &about) == 0 && about.st_size == 0)
        ::unlink(rollback.constData());
    else
        ::rename(rollback.constData(), QByteArray(to + rollbackSuffix));
}

} // namespace

bool makeJournalPlace(const QByteArray& path) {
    if (!makeFolder(folderOf(path)))
        return false;
    const int descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return false;
    ::close(descriptor);
    takeFromOthers(path);
    takeFromOthers(path + rollbackSuffix);
    return true;
}

QByteArray putJournalAside(const QByteArray& path, const QByteArray& word) {
    const QByteArray aside =
        path + '.' + word + '-' + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toLatin1();
    for (int number = 1; number < 100; ++number) {
        const QByteArray name = number == 1 ? aside : aside + '-' + QByteArray::number(number);
        if (renameWithoutReplacing(path, name)) {
            takeRollbackAlong(path, name);
            syncFolder(folderOf(path));
            return name;
        }
        if (errno != EEXIST)
            break;
    }
    return {};
}

} // namespace quenby
