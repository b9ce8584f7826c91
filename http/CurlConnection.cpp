#include "http/CurlConnection.h"

#include "http/CurlEventLoop.h"
#include "http/CurlTransfer.h"

namespace quenby {

std::unique_ptr<URLConnection> CurlConnection::create(const URLRequest& request, URLConnectionClient& client) {
    const QString scheme = request.url.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return nullptr;
    auto transfer = std::make_shared<CurlTransfer>(request, client, CurlEventLoop::ofThisThread());
    return std::unique_ptr<URLConnection>(new CurlConnection(std::move(transfer)));
}

void CurlConnection::start() { transfer_->start(); }

void CurlConnection::cancel() { transfer_->cancel(); }

} // namespace quenby
