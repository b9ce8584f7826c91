// What the environment says about proxies: http_proxy, https_proxy, all_proxy and no_proxy, also in capitals except
// for the first, which servers fill in with what a client sent them.
//
// Threads: any.
#pragma once

#include "http/ProxySource.h"

#include <optional>

namespace quenby {

// Absent when it names no proxy for addresses of this scheme, or none that can be understood, and does not except the
// host either.
std::optional<ProxyChoice> environmentProxies(const QUrl& url);

// Whether a host is in a list like that of no_proxy: names with everything below them, addresses, networks
// ("10.0.0.0/8") and "*", separated by commas or blanks; a name or an address may have a port.
bool isExceptedFromProxies(const QUrl& url, const QString& list);

// The computer itself: never by way of a proxy.
bool isLoopbackHost(const QString& host);

} // namespace quenby
