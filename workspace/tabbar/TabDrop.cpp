#include "workspace/tabbar/TabDrop.h"

#include "core/LocalPaths.h"

#include <QMimeData>

namespace quenby {
namespace {

constexpr qsizetype longestAddress = 4096;

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
