#include "core/LocalPaths.h"

#include <QSysInfo>

namespace quenby {
namespace {

bool isThisComputer(const QByteArray& host) {
    return host.isEmpty() || host.compare("localhost", Qt::CaseInsensitive) == 0 ||
           host.compare(QSysInfo::machineHostName().toUtf8(), Qt::CaseInsensitive) == 0;
}

} // namespace

QByteArray localPath(const QByteArray& encodedAddress) {
    const QByteArray scheme("file:");
    if (encodedAddress.first(qMin(scheme.size(), encodedAddress.size())).compare(scheme, Qt::CaseInsensitive) != 0)
        return {};
    QByteArray rest = encodedAddress.mid(scheme.size());
    if (rest.startsWith("//")) {
        const qsizetype slash = rest.indexOf('/', 2);
        if (slash < 0 || !isThisComputer(rest.mid(2, slash - 2)))
            return {};
        rest.remove(0, slash);
    }
    const QByteArray path = QByteArray::fromPercentEncoding(rest);
    // No file's name holds a NUL; whoever reads the path as text would take another file.
    return path.startsWith('/') && !path.contains('\0') ? path : QByteArray();
}

QByteArray localPath(const QUrl& url) { return localPath(url.toEncoded(QUrl::FullyEncoded)); }

QList<QByteArray> localPathsOfList(const QByteArray& uriList) {
    QList<QByteArray> paths;
    for (const QByteArray& line : uriList.split('\n')) {
        const QByteArray path = localPath(line.trimmed());
        if (!path.isEmpty())
            paths.append(path);
    }
    return paths;
}

} // namespace quenby
