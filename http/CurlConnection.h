// The real connection: libcurl on the Qt event loop. HTTP/1.1 and HTTP/2 over TLS, IPv4 and IPv6, certificates always
// verified against the system's trust store or what SSL_CERT_FILE and SSL_CERT_DIR name. Compressed answers are
// unpacked unless the request asks for a range or brings an Accept-Encoding of its own.
//
// Proxies: what a ProxySource says, which is asked anew for each host that a redirect leads to; without one, what the
// environment says (http_proxy, https_proxy, no_proxy). libcurl takes one proxy, so of several the first is used, and
// no other is tried when it cannot be reached.
//
// Connections are kept open and reused. When a reused one dies before its answer came, a GET, HEAD or OPTIONS goes out
// again on a new one; any other request that may have reached the server fails with
// URLErrorCode::networkConnectionLost, since only the caller can know whether it may be made twice.
#pragma once

#include "http/URLConnection.h"

#include <memory>

namespace quenby {

class CurlTransfer;
class ProxySource;

class CurlConnection final : public URLConnection {
public:
    // nullptr unless the scheme is http or https.
    static std::unique_ptr<URLConnection> create(const URLRequest& request, URLConnectionClient& client,
                                                 const std::shared_ptr<ProxySource>& proxySource = nullptr);
    static URLConnectionFactory factory(const std::shared_ptr<ProxySource>& proxySource = nullptr);

    ~CurlConnection() override { cancel(); }
    void start() override;
    void cancel() override;
    void setMaxSendSpeed(qint64 bytesPerSecond) override;

private:
    explicit CurlConnection(std::shared_ptr<CurlTransfer> transfer)
        : transfer_(std::move(transfer)) {}

    const std::shared_ptr<CurlTransfer> transfer_; // outlives us while libcurl is calling it
};

} // namespace quenby
