#include "http/SetCookieParser.h"

#include "http/HTTPDate.h"

#include <QHostAddress>

#include <algorithm>
#include <optional>

namespace quenby {
namespace {

struct Attributes {
    std::optional<QDateTime> expires;
    std::optional<qint64> maxAge; // seconds
    QString domain;               // without its leading dot
    QString path;
    bool isSecure = false;
    bool isHttpOnly = false;
};

struct Pair {
    QByteArrayView name;
    QByteArrayView value;
};

// Splits at the first "="; without one everything is the name.
Pair splitPair(QByteArrayView text) {
    const qsizetype equals = text.indexOf('=');
    if (equals < 0)
        return {text.trimmed(), {}};
    return {text.first(equals).trimmed(), text.sliced(equals + 1).trimmed()};
}

// Section 5.2.2: anything that is not an integer is ignored; one too large to count stands for "for ever".
std::optional<qint64> parseMaxAge(QByteArrayView value) {
    constexpr qint64 forEver = qint64(400) * 24 * 60 * 60; // the longest life that browsers grant
    const QByteArrayView digits = value.startsWith('-') ? value.sliced(1) : value;
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    if (value.startsWith('-'))
        return 0;
    bool fits = false;
    const qint64 seconds = digits.toByteArray().toLongLong(&fits);
    return fits ? std::min(seconds, forEver) : forEver;
}

void applyAttribute(Attributes& attributes, const Pair& pair) {
    const QByteArray name = pair.name.toByteArray().toLower();
    if (name == "expires") {
        if (const QDateTime date = parseHTTPDate(pair.value); date.isValid())
            attributes.expires = date;
    } else if (name == "max-age") {
        if (const auto seconds = parseMaxAge(pair.value))
            attributes.maxAge = seconds;
    } else if (name == "domain") {
        QString domain = QString::fromUtf8(pair.value).toLower();
        if (domain.startsWith(QLatin1Char('.')))
            domain.remove(0, 1);
        if (!domain.isEmpty())
            attributes.domain = domain;
    } else if (name == "path") {
        attributes.path = pair.value.startsWith('/') ? QString::fromUtf8(pair.value) : QString();
    } else if (name == "secure") {
        attributes.isSecure = true;
    } else if (name == "httponly") {
        attributes.isHttpOnly = true;
    }
}

// Section 5.1.4.
QString defaultPath(const QUrl& url) {
    const QString path = url.path();
    const qsizetype last = path.lastIndexOf(QLatin1Char('/'));
    return path.startsWith(QLatin1Char('/')) && last > 0 ? path.first(last) : QStringLiteral("/");
}

// The cookie's domain: the host for the host alone, with a dot in front for a domain and all below it. Nothing when
// the host may not set cookies for the domain. Domains of one label are refused, so that nobody sets cookies for all
// of "com".
std::optional<QString> cookieDomain(const QString& asked, const QString& host) {
    if (asked.isEmpty() || asked == host) {
        const bool isHostOnly = asked.isEmpty() || !QHostAddress(host).isNull() || !host.contains(QLatin1Char('.'));
        return isHostOnly ? host : QString(QLatin1Char('.') + host);
    }
    const QString dotted = QLatin1Char('.') + asked;
    if (!host.endsWith(dotted) || !asked.contains(QLatin1Char('.')) || !QHostAddress(host).isNull())
        return std::nullopt;
    return dotted;
}

std::optional<QNetworkCookie> parseSetCookie(QByteArrayView field, const QUrl& url, const QDateTime& now) {
    qsizetype end = std::max(field.indexOf(';'), qsizetype(-1));
    const QByteArrayView first = end < 0 ? field : field.first(end);
    const Pair pair = splitPair(first);
    if (!first.contains('=') || pair.name.isEmpty())
        return std::nullopt;
    Attributes attributes;
    while (end >= 0) {
        field = field.sliced(end + 1);
        end = field.indexOf(';');
        applyAttribute(attributes, splitPair(end < 0 ? field : field.first(end)));
    }
    const auto domain = cookieDomain(attributes.domain, url.host().toLower());
    if (!domain)
        return std::nullopt;

    QNetworkCookie cookie(pair.name.toByteArray(), pair.value.toByteArray());
    cookie.setDomain(*domain);
    cookie.setPath(attributes.path.isEmpty() ? defaultPath(url) : attributes.path);
    cookie.setSecure(attributes.isSecure);
    cookie.setHttpOnly(attributes.isHttpOnly);
    // Max-Age wins wherever it stands (section 5.3, step 3); zero and less mean "gone".
    if (attributes.maxAge)
        cookie.setExpirationDate(*attributes.maxAge > 0 ? now.addSecs(*attributes.maxAge) : now.addSecs(-1));
    else if (attributes.expires)
        cookie.setExpirationDate(*attributes.expires);
    return cookie;
}

} // namespace

QList<QNetworkCookie> parseSetCookieFields(const HeaderFields& headers, const QUrl& url, const QDateTime& now) {
    QList<QNetworkCookie> cookies;
    for (const QByteArray& field : headers.values("Set-Cookie")) {
        if (const auto cookie = parseSetCookie(field, url, now))
            cookies.append(*cookie);
    }
    return cookies;
}

} // namespace quenby
