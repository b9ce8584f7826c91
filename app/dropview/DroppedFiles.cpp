#include "app/dropview/DroppedFiles.h"

#include <QMimeData>
#include <QSysInfo>
#include <QUrl>

#include <algorithm>

#include <sys/stat.h>

namespace quenby {
namespace {

// Desktops write either nothing, "localhost" or this computer's own name.
bool isThisComputer(const QString& host) {
    return host.isEmpty() || host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 ||
           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
}

bool isRegularFile(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

QList<QByteArray> droppedPaths(const QMimeData& data) {
    QList<QByteArray> paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (!url.isLocalFile() || !isThisComputer(url.host()))
            continue;
        // Decoded from the encoded form: a name that is not UTF-8 would not survive as text.
        const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
        if (path.startsWith('/') && !path.contains('\0'))
            paths.append(path);
    }
    return paths;
}

bool holdsRegularFile(const QList<QByteArray>& paths) { return std::any_of(paths.begin(), paths.end(), isRegularFile); }

} // namespace quenby
