#include "tests/support/RawHttp.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace quenby::testing {
namespace {

constexpr int patience = 30'000; // milliseconds

} // namespace

QByteArray RawReply::header(QByteArrayView name) const {
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

bool RawReply::isComplete() const { return status != 0 && body.size() == header("Content-Length").toLongLong(); }

RawHttp::RawHttp(const QUrl& server)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<quint16>(server.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        close();
}

RawHttp::~RawHttp() { close(); }

void RawHttp::close() {
    if (socket_ >= 0)
        ::close(std::exchange(socket_, -1));
}

bool RawHttp::send(const QByteArray& bytes) {
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n =
            ::send(socket_, bytes.constData() + sent, static_cast<size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (n <= 0)
            return false;
        sent += n;
    }
    return true;
}

bool RawHttp::hasSomethingToRead(int milliseconds) const {
    pollfd waiting{socket_, POLLIN, 0};
    return !received_.isEmpty() || ::poll(&waiting, 1, milliseconds) > 0;
}

bool RawHttp::readMore() {
    if (ending_ != Ending::none)
        return false;
    pollfd waiting{socket_, POLLIN, 0};
    if (::poll(&waiting, 1, patience) <= 0) {
        ending_ = Ending::timeout;
        return false;
    }
    std::array<char, 64 * 1024> piece;
    const ssize_t got = ::recv(socket_, piece.data(), piece.size(), 0);
    if (got > 0)
        received_.append(piece.data(), got);
    else
        ending_ = got == 0 ? Ending::fin : Ending::rst;
    return got > 0;
}

RawReply RawHttp::readReply() {
    RawReply reply;
    qsizetype end = -1;
    while ((end = received_.indexOf("\r\n\r\n")) < 0) {
        if (!readMore()) {
            reply.bytes = std::exchange(received_, {});
            return reply;
        }
    }
    const QList<QByteArray> lines = received_.left(end).split('\n');
    reply.status = lines.first().split(' ').value(1).toInt();
    for (const QByteArray& line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        reply.headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
    }
    const qsizetype bodyStart = end + 4;
    const qsizetype length = reply.header("Content-Length").toLongLong();
    while (received_.size() < bodyStart + length && readMore())
        continue;
    reply.body = received_.mid(bodyStart, length);
    reply.bytes = received_.left(bodyStart + length);
    received_.remove(0, reply.bytes.size());
    return reply;
}

QByteArray RawHttp::readAvailable() {
    pollfd waiting{socket_, POLLIN, 0};
    while (::poll(&waiting, 1, 0) > 0 && readMore())
        continue;
    return std::exchange(received_, {});
}

QByteArray RawHttp::readToEnd() {
    while (readMore())
        continue;
    return std::exchange(received_, {});
}

QByteArray RawHttp::request(const QByteArray& method, const QByteArray& target, const QList<QByteArray>& headers,
                            const QByteArray& body) {
    QByteArray bytes = method + ' ' + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    const bool hasLength = std::any_of(headers.begin(), headers.end(),
                                       [](const auto& line) { return line.startsWith("Content-Length:"); });
    if (!hasLength)
        bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    for (const QByteArray& line : headers)
        bytes += line + "\r\n";
    return bytes + "\r\n" + body;
}

RawReply RawHttp::exchange(const QUrl& server, const QByteArray& request) {
    RawHttp connection(server);
    connection.send(request);
    return connection.readReply();
}

} // namespace quenby::testing
