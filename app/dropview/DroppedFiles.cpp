#include "app/dropview/DroppedFiles.h"

#include "core/LocalPaths.h"

#include <QMimeData>
#include <QUrl>

#include <algorithm>

#include <sys/stat.h>

namespace quenby {
namespace {

bool isRegularFile(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

QList<QByteArray> droppedPaths(const QMimeData& data) {
    QList<QByteArray> paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (const QByteArray path = localPath(url); !path.isEmpty())
            paths.append(path);
    }
    return paths;
}

bool holdsRegularFile(const QList<QByteArray>& paths) { return std::any_of(paths.begin(), paths.end(), isRegularFile); }

} // namespace quenby
