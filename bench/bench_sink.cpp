// The other end of the transfer benchmarks: a TLS server on 127.0.0.1 that swallows uploads and sends zeros.
//
//   bench_sink CERTIFICATE KEY      prints "listening on PORT" and serves until it is killed
//
// PUT and POST bodies are read and forgotten. A POST to /announce is answered with the location of a resumable
// upload; anything else that carries a body with a small JSON object. GET /bytes/N sends N bytes.

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr size_t bufferSize = 256 * 1024;

struct CloseSSL {
    void operator()(SSL* ssl) const { SSL_free(ssl); }
};

// One keep-alive connection, request after request.
class Conversation {
public:
    Conversation(SSL_CTX* context, int socket, unsigned short port)
        : socket_(socket)
        , port_(port)
        , ssl_(SSL_new(context))
        , buffer_(bufferSize) {
        SSL_set_fd(ssl_.get(), socket);
    }
    ~Conversation() { close(socket_); }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    void run() {
        if (SSL_accept(ssl_.get()) != 1)
            return;
        while (readHead() && swallowBody() && answer()) {
        }
    }

private:
    bool readHead() {
        while (true) {
            const size_t end = pending_.find("\r\n\r\n");
            if (end != std::string::npos) {
                head_ = pending_.substr(0, end + 2);
                pending_.erase(0, end + 4);
                return true;
            }
            const int count = SSL_read(ssl_.get(), buffer_.data(), static_cast<int>(buffer_.size()));
            if (count <= 0)
                return false;
            pending_.append(buffer_.data(), static_cast<size_t>(count));
        }
    }

    bool swallowBody() {
        const size_t field = findContentLength();
        size_t left = field == std::string::npos ? 0 : std::strtoull(head_.c_str() + field, nullptr, 10);
        const size_t held = std::min(left, pending_.size());
        pending_.erase(0, held);
        left -= held;
        while (left > 0) {
            const size_t want = std::min(left, buffer_.size());
            const int count = SSL_read(ssl_.get(), buffer_.data(), static_cast<int>(want));
            if (count <= 0)
                return false;
            left -= static_cast<size_t>(count);
        }
        return true;
    }

    size_t findContentLength() const {
        static const char name[] = "\r\ncontent-length:";
        const auto found = std::search(head_.begin(), head_.end(), name, name + sizeof name - 1,
                                       [](char a, char b) { return std::tolower(a) == std::tolower(b); });
        return found == head_.end() ? std::string::npos : static_cast<size_t>(found - head_.begin()) + sizeof name - 1;
    }

    bool answer() {
        if (head_.rfind("GET /bytes/", 0) == 0)
            return sendZeros(std::strtoull(head_.c_str() + std::strlen("GET /bytes/"), nullptr, 10));
        if (head_.rfind("POST /announce", 0) == 0)
            return send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nLocation: https://127.0.0.1:" + std::to_string(port_) +
                        "/session\r\n\r\n");
        return send("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 21\r\n\r\n"
                    "{\"kind\":\"drive#file\"}");
    }

    bool sendZeros(size_t left) {
        if (!send("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\nContent-Length: " +
                  std::to_string(left) + "\r\n\r\n"))
            return false;
        std::fill(buffer_.begin(), buffer_.end(), '\0');
        while (left > 0) {
            const size_t want = std::min(left, buffer_.size());
            const int count = SSL_write(ssl_.get(), buffer_.data(), static_cast<int>(want));
            if (count <= 0)
                return false;
            left -= static_cast<size_t>(count);
        }
        return true;
    }

    bool send(const std::string& text) {
        return SSL_write(ssl_.get(), text.data(), static_cast<int>(text.size())) == static_cast<int>(text.size());
    }

    int socket_;
    unsigned short port_;
    std::unique_ptr<SSL, CloseSSL> ssl_;
    std::vector<char> buffer_;
    std::string pending_;
    std::string head_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: bench_sink CERTIFICATE KEY\n", stderr);
        return 2;
    }
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    if (SSL_CTX_use_certificate_chain_file(context, argv[1]) != 1 ||
        SSL_CTX_use_PrivateKey_file(context, argv[2], SSL_FILETYPE_PEM) != 1) {
        std::fputs("bench_sink: the certificate or its key cannot be read\n", stderr);
        return 1;
    }
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener, 64) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        std::perror("bench_sink");
        return 1;
    }
    const unsigned short port = ntohs(address.sin_port);
    std::printf("listening on %u\n", static_cast<unsigned>(port));
    std::fflush(stdout);
    while (true) {
        const int accepted = accept(listener, nullptr, nullptr);
        if (accepted < 0)
            return 1;
        std::thread([context, accepted, port] { Conversation(context, accepted, port).run(); }).detach();
    }
}
