#include "core/WebPlaces.h"

namespace quenby {
namespace {

WebPlace at(const char* address, WebPlace::Hosts hosts = WebPlace::Hosts::exactly) {
    return {QUrl(QString::fromLatin1(address)), hosts};
}

int portOf(const QUrl& url) { return url.port(url.scheme() == QLatin1String("https") ? 443 : 80); }

// A host may be written with the root's dot at its end (RFC 1034, section 3.1).
QString hostOf(const QUrl& url) {
    const QString host = url.host(QUrl::FullyEncoded).toLower();
    return host.endsWith(QLatin1Char('.')) ? host.chopped(1) : host;
}

WebPlace inScheme(const WebPlace& place, const QString& scheme) {
    WebPlace other = place;
    other.base.setScheme(scheme);
    return other;
}

} // namespace

QString understoodPath(const QUrl& url) {
    const QString path = url.adjusted(QUrl::NormalizePathSegments).path(QUrl::FullyEncoded);
    return path.isEmpty() && !url.host().isEmpty() ? QStringLiteral("/") : path;
}

bool WebPlace::contains(const QUrl& url) const {
    return isOnHostOf(url) && understoodPath(url).startsWith(understoodPath(base));
}

bool WebPlace::containsInEitherScheme(const QUrl& url) const {
    return inScheme(*this, QStringLiteral("https")).contains(url) ||
           inScheme(*this, QStringLiteral("http")).contains(url);
}

bool WebPlace::isAt(const QUrl& url) const { return isOnHostOf(url) && understoodPath(url) == understoodPath(base); }

bool WebPlace::isOnHostOf(const QUrl& url) const {
    const QString ours = hostOf(base);
    if (ours.isEmpty() || !url.isValid() || url.scheme() != base.scheme() || portOf(url) != portOf(base) ||
        !url.userInfo().isEmpty())
        return false;
    const QString host = hostOf(url);
    return host == ours || (hosts == Hosts::withSubdomains && host.endsWith(QLatin1Char('.') + ours));
}

QUrl WebPlace::below(const QString& path) const {
    QString start = base.path();
    if (start.endsWith(QLatin1Char('/')))
        start.chop(1);
    QUrl url = base;
    url.setPath(start + path);
    return url;
}

WebPlace WebPlace::within(const QString& path) const { return {below(path), hosts}; }

WebPlaces WebPlaces::provider() {
    using Hosts = WebPlace::Hosts;
    WebPlaces places;
    places.drive = at("https://drive.google.com/");
    places.docs = at("https://docs.google.com/");
    places.viewer = at("https://googleusercontent.com/viewer/", Hosts::withSubdomains);
    places.userContent = at("https://googleusercontent.com/", Hosts::withSubdomains);
    places.accounts = at("https://accounts.google.com/");
    places.search = at("https://www.google.com/");
    places.providerDomain = at("https://google.com/", Hosts::withSubdomains);
    places.maps = at("https://www.google.com/maps/");
    places.storagePages = {at("https://www.google.com/settings/storage"), at("https://g.co/drive")};
    places.shareTargets = {at("https://plus.google.com/share"), at("https://twitter.com/intent/tweet"),
                           at("https://www.facebook.com/sharer")};
    places.socialNetwork = at("https://plus.google.com/");
    places.externalSites = {at("https://support.google.com/"),   at("https://www.youtube.com/"),
                            at("https://maps.google.com/"),      at("https://play.google.com/"),
                            at("https://news.google.com/"),      at("https://mail.google.com/"),
                            at("https://translate.google.com/"), at("https://books.google.com/"),
                            at("https://www.blogger.com/"),      at("https://photos.google.com/")};
    return places;
}

WebPlaces WebPlaces::localDrive(const QUrl& base) {
    const auto under = [&base](const char* path) {
        QUrl url = base;
        url.setPath(QString::fromLatin1(path));
        return WebPlace{url};
    };
    WebPlaces places = provider();
    places.drive = under("/");
    places.docs = under("/docs/");
    places.viewer = under("/viewer/");
    places.userContent = under("/usercontent/");
    places.accounts = under("/accounts/");
    places.search = under("/www/");
    places.providerDomain = under("/");
    places.maps = under("/www/maps/");
    places.storagePages = {under("/www/settings/storage"), under("/drive/app")};
    return places;
}

} // namespace quenby
