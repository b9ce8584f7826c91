#include "app/pictures/PictureAddress.h"

#include <QHostAddress>

namespace quenby {
namespace {

bool isThisComputer(const QString& host) {
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

int portOf(const QUrl& url) { return url.port(url.scheme() == QLatin1String("https") ? 443 : 80); }

bool haveSameOrigin(const QUrl& one, const QUrl& other) {
    return one.scheme() == other.scheme() && one.host() == other.host() && portOf(one) == portOf(other);
}

} // namespace

PictureAddress pictureAddress(const QUrl& url, const Endpoints& endpoints) {
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty())
        return PictureAddress::refused;
    const bool isPrivate = url.scheme() == QLatin1String("https") ||
                           (endpoints.isLocal && url.scheme() == QLatin1String("http") && isThisComputer(url.host()));
    if (!isPrivate)
        return PictureAddress::refused;
    for (const QUrl& own : {endpoints.rpcURL, endpoints.downloadBaseURL, endpoints.webURL}) {
        if (haveSameOrigin(url, own))
            return PictureAddress::ofTheDrive;
    }
    return PictureAddress::foreign;
}

} // namespace quenby
