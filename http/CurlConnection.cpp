#include "http/CurlConnection.h"

#include "http/CurlEventLoop.h"
#include "http/CurlTransfer.h"

namespace quenby {

std::unique_ptr<URLConnection> CurlConnection::create(const URLRequest& request, URLConnectionClient& client,
                                                      const std::shared_ptr<ProxySource>& proxySource) {
    const QString scheme = request.url.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return nullptr;
    auto transfer = std::make_shared<CurlTransfer>(request, client, CurlEventLoop::ofThisThread(), proxySource);
    return std::unique_ptr<URLConnection>(new CurlConnection(std::move(transfer)));
}

URLConnectionFactory CurlConnection::factory(const std::shared_ptr<ProxySource>& proxySource) {
    return [proxySource](const URLRequest& request, URLConnectionClient& client) {
        return create(request, client, proxySource);
    };
}

void CurlConnection::start() { transfer_->start(); }

void CurlConnection::cancel() { transfer_->cancel(); }

void CurlConnection::setMaxSendSpeed(qint64 bytesPerSecond) { transfer_->setMaxSendSpeed(bytesPerSecond); }

} // namespace quenby
