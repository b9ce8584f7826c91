#include "localdrive/server/http/ClientConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace quenby::localdrive {
namespace {

using namespace std::chrono_literals;

constexpr qsizetype pieceSize = 256 * 1024;
// How long one side may be silent in the middle of a request or a reply.
constexpr auto silenceLimit = 60s;
// How long a dropped connection waits for the client's next bytes or its FIN.
constexpr auto lingering = 1s;

void addressText(const sockaddr_storage& address, std::string& ip, int& port) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.ss_family == AF_INET) {
        const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
        ip = ::inet_ntop(AF_INET, &v4.sin_addr, text.data(), text.size());
        port = ntohs(v4.sin_port);
    } else if (address.ss_family == AF_INET6) {
        const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
        ip = ::inet_ntop(AF_INET6, &v6.sin6_addr, text.data(), text.size());
        port = ntohs(v6.sin6_port);
    }
}

} // namespace

ClientConnection::ClientConnection(socket_t socket, const StopEvent& stop)
    : socket_(socket)
    , stop_(stop) {
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

ClientConnection::~ClientConnection() {
    if (!isOpen())
        return;
    endWriting();
    close();
}

bool ClientConnection::acceptTls(SSL_CTX* context) {
    tls_.reset(SSL_new(context));
    if (!tls_ || SSL_set_fd(tls_.get(), socket_) != 1 || !waitFor(POLLIN, silenceLimit))
        return false;
    return SSL_accept(tls_.get()) == 1;
}

bool ClientConnection::waitForRequest(std::chrono::milliseconds timeout) {
    return !buffered().isEmpty() || ((tls_ && SSL_pending(tls_.get()) > 0) || waitFor(POLLIN, timeout));
}

QByteArrayView ClientConnection::buffered() const { return QByteArrayView(buffer_).sliced(readPosition_); }

bool ClientConnection::bufferMore() {
    buffer_.remove(0, std::exchange(readPosition_, 0));
    const qsizetype before = buffer_.size();
    buffer_.resize(before + pieceSize);
    const ssize_t received = receive(buffer_.data() + before, static_cast<size_t>(pieceSize));
    buffer_.resize(before + std::max<ssize_t>(received, 0));
    return received > 0;
}

bool ClientConnection::pause(std::chrono::milliseconds duration) {
    std::array<pollfd, 2> waiting{{{socket_, POLLRDHUP, 0}, {stop_.descriptor(), POLLIN, 0}}};
    return ::poll(waiting.data(), waiting.size(), static_cast<int>(duration.count())) == 0;
}

void ClientConnection::drop() {
    if (!isOpen())
        return;
    endWriting();
    std::array<char, 4096> thrownAway;
    while (waitFor(POLLIN, lingering) && ::recv(socket_, thrownAway.data(), thrownAway.size(), 0) > 0)
        continue;
    close();
}

void ClientConnection::endWriting() {
    if (tls_)
        SSL_shutdown(tls_.get());
    ::shutdown(socket_, SHUT_WR);
}

void ClientConnection::reset() {
    if (!isOpen())
        return;
    const linger atOnce{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close();
}

void ClientConnection::close() {
    tls_.reset();
    ::close(std::exchange(socket_, -1));
}

bool ClientConnection::is_readable() const { return isOpen() && waitFor(POLLIN, 0ms); }

bool ClientConnection::is_writable() const { return isOpen() && waitFor(POLLOUT, silenceLimit); }

ssize_t ClientConnection::read(char* target, size_t size) {
    if (buffered().isEmpty()) {
        readPosition_ = 0;
        buffer_.resize(0);
        if (!isOpen())
            return -1;
        buffer_.resize(pieceSize);
        const ssize_t received = receive(buffer_.data(), static_cast<size_t>(pieceSize));
        buffer_.resize(std::max<ssize_t>(received, 0));
        if (received <= 0)
            return received;
    }
    const QByteArrayView available = buffered();
    const qsizetype taken = std::min(available.size(), static_cast<qsizetype>(size));
    std::copy_n(available.data(), taken, target);
    readPosition_ += taken;
    return taken;
}

ssize_t ClientConnection::write(const char* bytes, size_t size) {
    size_t written = 0;
    while (written < size) {
        const ssize_t sent = isOpen() ? send(bytes + written, size - written) : -1;
        if (sent <= 0)
            return -1;
        written += static_cast<size_t>(sent);
    }
    return static_cast<ssize_t>(size);
}

void ClientConnection::get_remote_ip_and_port(std::string& ip, int& port) const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (::getpeername(socket_, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        addressText(address, ip, port);
}

void ClientConnection::get_local_ip_and_port(std::string& ip, int& port) const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        addressText(address, ip, port);
}

// True when the socket is ready, or has failed, so that the next call on it answers at once.
bool ClientConnection::waitFor(short events, std::chrono::milliseconds timeout) const {
    std::array<pollfd, 2> waiting{{{socket_, events, 0}, {stop_.descriptor(), POLLIN, 0}}};
    int ready = 0;
    do {
        ready = ::poll(waiting.data(), waiting.size(), static_cast<int>(timeout.count()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0 && waiting[1].revents == 0;
}

ssize_t ClientConnection::receive(char* target, size_t size) {
    if (tls_ && SSL_pending(tls_.get()) > 0)
        return SSL_read(tls_.get(), target, static_cast<int>(size));
    if (!waitFor(POLLIN, silenceLimit))
        return -1;
    if (tls_)
        return SSL_read(tls_.get(), target, static_cast<int>(size));
    ssize_t received = 0;
    do {
        received = ::recv(socket_, target, size, 0);
    } while (received < 0 && errno == EINTR);
    return received;
}

ssize_t ClientConnection::send(const char* bytes, size_t size) {
    ssize_t sent = -1;
    do {
        if (!waitFor(POLLOUT, silenceLimit))
            return -1;
        sent = tls_ ? SSL_write(tls_.get(), bytes, static_cast<int>(std::min<size_t>(size, pieceSize)))
                    : ::send(socket_, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (sent < 0 && !tls_ && (errno == EINTR || errno == EAGAIN));
    return sent;
}

} // namespace quenby::localdrive
