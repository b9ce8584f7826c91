// The HTTP library's server on our own connections: prompt at stopping, cheap at uploads, and with a place for faults.
#pragma once

#include "localdrive/server/Roads.h"
#include "localdrive/server/fault/FaultPlan.h"
#include "localdrive/server/fault/FaultyExchange.h"
#include "localdrive/server/fault/Statistics.h"
#include "localdrive/server/http/ClientConnection.h"

#include <atomic>

namespace quenby::localdrive {

// What a server with a control endpoint has besides: ordered faults, what they act upon, and the counts.
struct FaultControl {
    FaultPlan& plan;
    FaultEffects& effects;
    Statistics& statistics;
    const Roads& roads;
};

// Routes are added before listening; the handlers run on the connections' threads, many at a time.
class HttpServer final : public httplib::Server {
public:
    // Without `faults`, requests are not looked at before the library does. Without a TLS context, plain.
    explicit HttpServer(std::optional<FaultControl> faults = std::nullopt, SSL_CTX* tls = nullptr);

    // Takes a port on 127.0.0.1, 0: any, and returns which. From here on clients can connect; they wait for serve().
    std::optional<quint16> bindLoopback(quint16 port);
    // Serves until stopNow(); called once, after binding. False when it could not listen.
    bool serve();
    // Ends serve(), and every connection at once. Bytes of uploads that have arrived are kept. From any thread.
    void stopNow();
    // How long no request has been in the works; zero while one is. From any thread.
    std::chrono::milliseconds idleTime() const;

private:
    bool process_and_close_socket(socket_t socket) override;
    // One request and its reply. True when the connection can take the next.
    bool exchange(ClientConnection& connection);
    bool process(httplib::Stream& stream, FaultyExchange::Work work);
    void addDiscardingRoutes();

    const std::optional<FaultControl> faults_;
    SSL_CTX* const tls_;
    StopEvent stop_;
    std::atomic<int> running_ = 0;
    std::atomic<std::chrono::steady_clock::time_point> lastEnd_ = std::chrono::steady_clock::now();
};

} // namespace quenby::localdrive
