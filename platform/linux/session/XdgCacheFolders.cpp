#include "platform/linux/session/XdgCacheFolders.h"

#include <QFile>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

bool isFolderName(const QString& name) {
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QChar(u'\0'));
}

Error problem(int number, const QString& path) {
    const std::string why = std::generic_category().message(number);
    return Error(
        errorDomain::posix, number,
        {{errorKey::reason, QStringLiteral("The cache folder %1 cannot be made: %2. Make room, or give yourself "
                                           "the permission to write there.")
                                .arg(path, QString::fromLocal8Bit(why.c_str()))}});
}

// The folders above a cache folder, which only their owner may look into when they are made here.
int makeParents(const QByteArray& path) {
    for (qsizetype slash = path.indexOf('/', 1); slash > 0; slash = path.indexOf('/', slash + 1)) {
        if (::mkdir(path.left(slash).constData(), 0700) != 0 && errno != EEXIST && errno != EISDIR && errno != EROFS)
            return errno;
    }
    return 0;
}

} // namespace

QString XdgCacheFolders::path(const QString& name) const { return base_ + QLatin1Char('/') + name; }

Result<QString> XdgCacheFolders::create(const QString& name) {
    const QString folder = path(name);
    if (!isFolderName(name))
        return problem(EINVAL, folder);
    const QByteArray bytes = QFile::encodeName(folder);
    if (const int number = makeParents(bytes); number != 0)
        return problem(number, folder);
    struct ::stat about {};
    // Whatever else stands there, a link above all, would lead what is written to another place.
    if (::lstat(bytes.constData(), &about) == 0 && !S_ISDIR(about.st_mode) && ::unlink(bytes.constData()) != 0)
        return problem(errno, folder);
    if (::mkdir(bytes.constData(), 0700) == 0)
        return folder;
    if (errno != EEXIST)
        return problem(errno, folder);
    if (::lstat(bytes.constData(), &about) != 0 || !S_ISDIR(about.st_mode))
        return problem(ENOTDIR, folder);
    if (about.st_uid != ::geteuid())
        return problem(EPERM, folder);
    if ((about.st_mode & 07777) != 0700 && ::chmod(bytes.constData(), 0700) != 0)
        return problem(errno, folder);
    return folder;
}

void XdgCacheFolders::remove(const QString& name) {
    if (!isFolderName(name))
        return;
    // Removes links instead of following them, the outermost one, too.
    std::error_code ignored;
    std::filesystem::remove_all(QFile::encodeName(path(name)).toStdString(), ignored);
}

} // namespace quenby
