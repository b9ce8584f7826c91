// The addresses of the sign-in: the one to open, and those by which the provider's answer is recognised.
#pragma once

#include "http/URLRequest.h"
#include "oauth2/OAuth2Encoding.h"

namespace quenby::oauth2 {

// The redirect URI of an application that has none: the provider shows its answer in the page's title.
inline const QString nativeClientRedirectURI = QStringLiteral("urn:ietf:wg:oauth:2.0:oob");

// A request for the address with more query parameters, already encoded, after those that it has. User info and
// fragment go.
URLRequest mutableURLRequestWithURL(const QUrl& url, const QString& paramString);

// Whether an address is the redirect URI, whatever its query. Never for the native client's. Hosts and paths decide;
// where the redirect URI has no host, the scheme does too.
bool isRedirectTo(const QUrl& url, const QString& redirectURI);

// The domain itself or a host below it.
bool isHostInDomain(const QString& host, const QString& domain);

// The provider's answer at the end of a page title such as "Success code=4/x"; empty when there is none.
FormFields answerInTitle(const QString& title);

// The provider's answer in a redirect's query.
FormFields answerInRedirect(const QUrl& url);

} // namespace quenby::oauth2
