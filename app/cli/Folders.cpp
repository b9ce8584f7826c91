#include "app/cli/Folders.h"

#include "app/cli/DisplayText.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>

namespace quenby {
namespace {

QByteArray withoutTrailingSlashes(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

QByteArray baseFolder(const char* variable, const char* belowHome) {
    const QByteArray base = qgetenv(variable);
    return base.startsWith('/') ? base : QByteArray(QFile::encodeName(QDir::homePath()) + belowHome);
}

} // namespace

QByteArray stateFolder() { return baseFolder("XDG_STATE_HOME", "/.local/state") + "/quenby"; }

QByteArray defaultLocalDriveFolder() { return baseFolder("XDG_DATA_HOME", "/.local/share") + "/quenby/local-drive"; }

// In bytes throughout: the working folder's path need not be text.
QByteArray absolutePath(const QByteArray& path) {
    if (path.startsWith('/'))
        return path;
    std::error_code removed;
    const auto folder = std::filesystem::current_path(removed);
    return QByteArray::fromStdString(folder.native()) + '/' + path;
}

bool isThere(const QByteArray& path) {
    struct stat status {};
    return lstat(path.constData(), &status) == 0;
}

QByteArray folderOf(const QByteArray& path) {
    const QByteArray trimmed = withoutTrailingSlashes(path);
    const qsizetype slash = trimmed.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : trimmed.first(std::max<qsizetype>(slash, 1));
}

QByteArray lastComponent(const QByteArray& path) {
    const QByteArray trimmed = withoutTrailingSlashes(path);
    return trimmed.mid(trimmed.lastIndexOf('/') + 1);
}

Result<void> makePrivateFolder(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode))
        return {};
    const QByteArray parent = folderOf(path);
    if (parent != path && ::stat(parent.constData(), &status) != 0) {
        if (auto made = makePrivateFolder(parent); !made)
            return made;
    }
    if (::mkdir(path.constData(), S_IRWXU) != 0)
        return fileError(errno, QStringLiteral("can't make the folder"), path);
    return {};
}

Error fileError(int code, const QString& tried, const QByteArray& path) {
    const QString reason = tried + QLatin1Char(' ') + printablePath(path) + QStringLiteral(": ") +
                           QString::fromLocal8Bit(std::strerror(code));
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

} // namespace quenby
