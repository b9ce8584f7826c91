#include "localdrive/server/http/HttpServer.h"

#include <QScopeGuard>

#include <sys/socket.h>

#include <limits>

namespace quenby::localdrive {
namespace {

using namespace std::chrono_literals;

// A connection keeps its thread while it lives. More clients than this wait for their turn.
constexpr size_t threadCount = 64;
constexpr auto keepAlive = 60s;
// Clients that have connected and wait to be accepted.
constexpr int connectionQueue = 256;

// Where requests go that are read to their end and not handled. No client can ask for it: a path begins with "/".
constexpr char discardPath[] = "discard";

// Longer heads are left to the library, which refuses them.
constexpr qsizetype longestHead = 64 * 1024;

// Orders for faults are never faulty themselves, nor counted.
constexpr char controlPath[] = "/control/";

// Names under which this server can be reached. Others mean that a web page had its own name point here, to read the
// Drive as if it were its own site.
bool isLocalName(const std::string& hostHeader) {
    const QByteArrayView host(hostHeader.data(), static_cast<qsizetype>(hostHeader.size()));
    for (const QByteArrayView name :
         {QByteArrayView("127.0.0.1"), QByteArrayView("localhost"), QByteArrayView("[::1]")}) {
        if (host.startsWith(name) && (host.size() == name.size() || host[name.size()] == ':'))
            return true;
    }
    return host.isEmpty();
}

// Looks at the request in the connection's buffer without taking it. Nothing when it never becomes complete.
std::optional<RequestFacts> peek(ClientConnection& connection) {
    std::optional<RequestFacts> facts;
    while (!(facts = RequestFacts::ofHead(connection.buffered()))) {
        if (connection.buffered().size() > longestHead || !connection.bufferMore())
            return std::nullopt;
    }
    if (facts->needsBody()) {
        while (connection.buffered().size() < facts->headLength + facts->bodyLength) {
            if (!connection.bufferMore())
                return std::nullopt;
        }
        facts->readBody(connection.buffered().sliced(facts->headLength, facts->bodyLength));
    }
    return facts;
}

} // namespace

HttpServer::HttpServer(std::optional<FaultControl> faults, SSL_CTX* tls)
    : faults_(faults)
    , tls_(tls) {
    new_task_queue = [] { return new httplib::ThreadPool(threadCount); };
    set_keep_alive_timeout(keepAlive.count());
    set_keep_alive_max_count(std::numeric_limits<int>::max());
    // A server that was just killed must get its port back. Sharing it with a live one, which the library would allow,
    // must not happen.
    set_socket_options([](socket_t socket) {
        const int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    set_exception_handler(
        [](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) { response.status = 500; });
    addDiscardingRoutes();
}

std::optional<quint16> HttpServer::bindLoopback(quint16 port) {
    const std::string host = "127.0.0.1";
    const int bound = port == 0 ? bind_to_any_port(host) : (bind_to_port(host, port) ? port : -1);
    if (bound <= 0)
        return std::nullopt;
    // The library's own queue is five connections long. A longer one may be asked for at any time.
    ::listen(svr_sock_, connectionQueue);
    return static_cast<quint16>(bound);
}

bool HttpServer::serve() { return listen_after_bind(); }

void HttpServer::stopNow() {
    stop_.raise();
    stop();
}

std::chrono::milliseconds HttpServer::idleTime() const {
    if (running_ > 0)
        return 0ms;
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - lastEnd_.load());
}

bool HttpServer::process_and_close_socket(socket_t socket) {
    ClientConnection connection(socket, stop_);
    if (tls_ && !connection.acceptTls(tls_))
        return false;
    while (connection.waitForRequest(keepAlive)) {
        if (!exchange(connection))
            return false;
    }
    return true;
}

bool HttpServer::exchange(ClientConnection& connection) {
    ++running_;
    const auto ended = qScopeGuard([this] {
        lastEnd_ = std::chrono::steady_clock::now();
        --running_;
    });
    auto request = faults_ ? peek(connection) : std::nullopt;
    if (request && !request->path().startsWith(controlPath)) {
        const bool isRpcOpen = faults_->roads.isRpcOpen();
        if (!isRpcOpen)
            request->forgetRpc();
        faults_->statistics.requestSeen(*request);
        // Calls at a closed address are answered as such: a rule is for those that are handled.
        const bool isClosed = !isRpcOpen && request->isRpcCall();
        if (const auto action = isClosed ? std::nullopt : faults_->plan.strike(*request)) {
            return FaultyExchange(connection, *request, *action, faults_->effects)
                .run([this](httplib::Stream& stream, FaultyExchange::Work work) { return process(stream, work); });
        }
    }
    return process(connection, FaultyExchange::Work::done);
}

bool HttpServer::process(httplib::Stream& stream, FaultyExchange::Work work) {
    bool closes = false;
    const auto prepare = [&](httplib::Request& request) {
        // Ranges are answered by the handlers, which know what they serve.
        request.ranges.clear();
        // RFC 9112, section 6.3: without a length there is no body. The library would read up to the end.
        if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
            request.set_header("Content-Length", "0");
        if (!isLocalName(request.get_header_value("Host"))) {
            request.path = discardPath;
            closes = true;
        }
        if (work == FaultyExchange::Work::skipped)
            request.path = discardPath;
    };
    return process_request(stream, false, closes, prepare) && !closes;
}

void HttpServer::addDiscardingRoutes() {
    const auto reading = [](const httplib::Request&, httplib::Response& response, const httplib::ContentReader& read) {
        read([](const char*, size_t) { return true; });
        response.status = 403;
    };
    const auto empty = [](const httplib::Request&, httplib::Response& response) { response.status = 403; };
    Get(discardPath, empty);
    Post(discardPath, reading);
    Put(discardPath, reading);
    Patch(discardPath, reading);
    Delete(discardPath, reading);
}

} // namespace quenby::localdrive
