#include "preferences/general/FolderPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quenby {
namespace {

bool readsAsIn(const QByteArray& path, const QByteArray& folder) {
    return path == folder || path.startsWith(folder.endsWith('/') ? folder : QByteArray(folder + '/'));
}

} // namespace

QByteArray cleanedPath(const QByteArray& path) { return QFile::encodeName(QDir::cleanPath(QFile::decodeName(path))); }

QByteArray canonicalPath(const QByteArray& path) {
    return QFile::encodeName(QFileInfo(QFile::decodeName(path)).canonicalFilePath());
}

bool isSameFolder(const QByteArray& one, const QByteArray& other) {
    if (cleanedPath(one) == cleanedPath(other))
        return true;
    const QByteArray canonical = canonicalPath(one);
    return !canonical.isEmpty() && canonical == canonicalPath(other);
}

bool isInFolder(const QByteArray& path, const QByteArray& folder) {
    if (readsAsIn(cleanedPath(path), cleanedPath(folder)))
        return true;
    const QByteArray canonical = canonicalPath(path);
    const QByteArray canonicalFolder = canonicalPath(folder);
    return !canonical.isEmpty() && !canonicalFolder.isEmpty() && readsAsIn(canonical, canonicalFolder);
}

QByteArray parentFolder(const QByteArray& folder) { return cleanedPath(folder + "/.."); }

} // namespace quenby
