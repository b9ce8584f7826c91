// Whoever knows through which proxies addresses are reached. Connections ask it before each exchange; without one they
// follow the environment, as libcurl reads it.
#pragma once

#include "core/CompletionGate.h"

#include <QList>
#include <QUrl>

namespace quenby {

// The proxies that lead to an address, best first; none: it is reached directly. Each is a scheme, a host and a port:
// http, https, socks4, socks4a, socks5 (the host's name is looked up here) or socks5h (by the proxy). User info is the
// credential for the proxy, and a secret.
struct ProxyChoice {
    QList<QUrl> proxies;
};

class ProxySource {
public:
    using Found = std::function<void(const ProxyChoice&)>;

    virtual ~ProxySource() = default;
    // Answers always, though it may take long: a system may look for a script on the network first. Of the address only
    // scheme, host and port count. Any thread; the answer comes on the context's.
    virtual CompletionTicket findProxies(const QUrl& url, QObject* context, Found found) = 0;
};

} // namespace quenby
