// Reads Set-Cookie fields as RFC 6265, section 5.2 lays down. The toolkit has a parser of its own, which departs from
// it in what it refuses and in which of Max-Age and Expires wins; its cookie class serves us well.
#pragma once

#include "http/HeaderFields.h"

#include <QDateTime>
#include <QList>
#include <QNetworkCookie>
#include <QUrl>

namespace quenby {

// The cookies that a response from this address sets, in order, with their domain and path filled in. Cookies for a
// domain that the address does not belong to are left out (section 5.3). A cookie to be removed comes with an expiry
// date in the past.
QList<QNetworkCookie> parseSetCookieFields(const HeaderFields& headers, const QUrl& url, const QDateTime& now);

} // namespace quenby
