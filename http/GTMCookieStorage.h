// The cookies that fetchers send and keep, apart from everybody else's.
//
// Threads: any. Order: as they were set. A cookie's domain begins with a dot when it is meant for a domain and its
// subdomains, and is a plain host name when it is meant for that host alone (parseSetCookieFields() sees to that).
#pragma once

#include "core/TimeSource.h"

#include <QByteArray>
#include <QList>
#include <QNetworkCookie>
#include <QUrl>

#include <memory>
#include <mutex>
#include <optional>

namespace quenby {

class GTMCookieStorage {
public:
    explicit GTMCookieStorage(std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource());

    // Each replaces the stored cookie of its name, domain and path; one that has expired already only removes it.
    // Cookies without a name, a domain or a path are left out.
    void setCookies(const QList<QNetworkCookie>& cookies);
    QList<QNetworkCookie> cookiesForURL(const QUrl& url);
    // Those as the value of a Cookie field (RFC 6265, section 4.2); empty when there are none.
    QByteArray cookieHeaderForURL(const QUrl& url);
    // The stored cookie of the same name, domain and path.
    std::optional<QNetworkCookie> cookieMatchingCookie(const QNetworkCookie& cookie) const;
    void deleteCookie(const QNetworkCookie& cookie);
    void removeExpiredCookies();
    void removeAllCookies();
    QList<QNetworkCookie> cookies() const;

private:
    void removeMatching(const QNetworkCookie& cookie); // locked by the caller, as the next
    void removeExpired(const QDateTime& now);

    const std::shared_ptr<TimeSource> timeSource_;
    mutable std::mutex mutex_;
    QList<QNetworkCookie> cookies_;
};

} // namespace quenby
