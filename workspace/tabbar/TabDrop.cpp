#include "workspace/tabbar/TabDrop.h"

#include <QMimeData>
#include <QSysInfo>

namespace quenby {
namespace {

constexpr qsizetype longestAddress = 4096;

// Desktops write either nothing, "localhost" or this computer's own name.
bool isThisComputer(const QString& host) {
    return host.isEmpty() || host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 ||
           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
}

QByteArray localPath(const QUrl& url) {
    if (!url.isLocalFile() || !isThisComputer(url.host()))
        return {};
    // Decoded from the encoded form: a name that is not UTF-8 would not survive as text.
    const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    return path.startsWith('/') && !path.contains('\0') ? path : QByteArray();
}

bool isWebAddress(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

} // namespace

TabDrop tabDrop(const QMimeData& data) {
    TabDrop drop;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (const QByteArray path = localPath(url); !path.isEmpty())
            drop.paths.append(path);
        else if (drop.address.isEmpty() && isWebAddress(url))
            drop.address = url;
    }
    if (drop.isUsable())
        return drop;
    if (const QString text = data.text().trimmed(); text.size() <= longestAddress) {
        if (const QUrl url(text, QUrl::StrictMode); isWebAddress(url))
            drop.address = url;
    }
    return drop;
}

} // namespace quenby
