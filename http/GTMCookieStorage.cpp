#include "http/GTMCookieStorage.h"

#include <algorithm>

namespace quenby {
namespace {

bool matchesDomain(const QString& cookieDomain, const QString& host) {
    const QString domain = cookieDomain.toLower();
    if (host == QLatin1String("localhost"))
        return domain == host || domain == QLatin1String("localhost.local");
    if (!domain.startsWith(QLatin1Char('.')))
        return domain == host;
    return QString(QLatin1Char('.') + host).endsWith(domain);
}

bool isSentTo(const QNetworkCookie& cookie, const QUrl& url) {
    const QString path = url.path().isEmpty() ? QStringLiteral("/") : url.path();
    return matchesDomain(cookie.domain(), url.host().toLower()) &&
           (cookie.path() == QLatin1String("/") || path.startsWith(cookie.path())) &&
           (!cookie.isSecure() || url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0);
}

} // namespace

GTMCookieStorage::GTMCookieStorage(std::shared_ptr<TimeSource> timeSource)
    : timeSource_(std::move(timeSource)) {}

void GTMCookieStorage::setCookies(const QList<QNetworkCookie>& cookies) {
    const QDateTime now = timeSource_->now();
    const std::lock_guard lock(mutex_);
    removeExpired(now);
    for (const QNetworkCookie& cookie : cookies) {
        if (cookie.name().isEmpty() || cookie.domain().isEmpty() || cookie.path().isEmpty())
            continue;
        removeMatching(cookie);
        if (cookie.isSessionCookie() || cookie.expirationDate() > now)
            cookies_.append(cookie);
    }
}

QList<QNetworkCookie> GTMCookieStorage::cookiesForURL(const QUrl& url) {
    const QDateTime now = timeSource_->now();
    const std::lock_guard lock(mutex_);
    removeExpired(now);
    QList<QNetworkCookie> found;
    std::copy_if(cookies_.cbegin(), cookies_.cend(), std::back_inserter(found),
                 [&url](const QNetworkCookie& cookie) { return isSentTo(cookie, url); });
    return found;
}

QByteArray GTMCookieStorage::cookieHeaderForURL(const QUrl& url) {
    QByteArrayList pairs;
    for (const QNetworkCookie& cookie : cookiesForURL(url))
        pairs.append(cookie.name() + '=' + cookie.value());
    return pairs.join("; ");
}

std::optional<QNetworkCookie> GTMCookieStorage::cookieMatchingCookie(const QNetworkCookie& cookie) const {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(cookies_.cbegin(), cookies_.cend(), [&cookie](const QNetworkCookie& stored) {
        return stored.hasSameIdentifier(cookie);
    });
    return found == cookies_.cend() ? std::nullopt : std::optional(*found);
}

void GTMCookieStorage::deleteCookie(const QNetworkCookie& cookie) {
    const std::lock_guard lock(mutex_);
    removeMatching(cookie);
}

void GTMCookieStorage::removeExpiredCookies() {
    const QDateTime now = timeSource_->now();
    const std::lock_guard lock(mutex_);
    removeExpired(now);
}

void GTMCookieStorage::removeAllCookies() {
    const std::lock_guard lock(mutex_);
    cookies_.clear();
}

QList<QNetworkCookie> GTMCookieStorage::cookies() const {
    const std::lock_guard lock(mutex_);
    return cookies_;
}

void GTMCookieStorage::removeMatching(const QNetworkCookie& cookie) {
    cookies_.removeIf([&cookie](const QNetworkCookie& stored) { return stored.hasSameIdentifier(cookie); });
}

void GTMCookieStorage::removeExpired(const QDateTime& now) {
    cookies_.removeIf(
        [&now](const QNetworkCookie& stored) { return !stored.isSessionCookie() && stored.expirationDate() < now; });
}

} // namespace quenby
