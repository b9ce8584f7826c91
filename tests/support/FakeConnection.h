// Connections that go nowhere: a test sees what was asked and plays the server itself.
#pragma once

#include "http/URLConnection.h"

#include <memory>
#include <vector>

namespace quenby::testing {

// Everything that the connections made by factory() were asked, and the means to answer.
class FakeNetwork {
public:
    // One exchange. It stays after its connection is gone, and its answers then go nowhere.
    class Exchange {
    public:
        explicit Exchange(const URLRequest& asked)
            : request(asked) {}

        URLRequest request;
        bool isStarted = false;
        bool isCancelled = false;

        void receiveHead(int status, const HeaderFields& headers = {}) {
            HTTPResponse response;
            response.url = request.url;
            response.statusCode = status;
            response.headers = headers;
            if (client_)
                client_->connectionDidReceiveResponse(response);
        }
        // A failure of the connection when the data was refused, as a real one has it.
        void receiveData(const QByteArray& data) {
            if (client_ && !client_->connectionDidReceiveData(data))
                fail(Error(URLErrorCode::cancelled));
        }
        void finish() {
            if (auto* client = std::exchange(client_, nullptr))
                client->connectionDidFinishLoading();
        }
        void fail(const Error& error) {
            if (auto* client = std::exchange(client_, nullptr))
                client->connectionDidFailWithError(error);
        }
        void answer(int status, const QByteArray& body = {}, const HeaderFields& headers = {}) {
            receiveHead(status, headers);
            if (!body.isEmpty())
                receiveData(body);
            finish();
        }
        std::optional<URLRequest> redirect(const URLRequest& to, const HeaderFields& headers = {}) {
            HTTPResponse response;
            response.url = request.url;
            response.statusCode = 302;
            response.headers = headers;
            return client_->connectionWillSendRequest(to, response);
        }
        std::optional<Credential> challenge(const AuthenticationChallenge& asked) {
            return client_->connectionDidReceiveChallenge(asked);
        }
        void send(qint64 bytes, qint64 total, qint64 expected) {
            client_->connectionDidSendBodyData(bytes, total, expected);
        }

    private:
        friend class FakeNetwork;
        URLConnectionClient* client_ = nullptr;
    };

    URLConnectionFactory factory() {
        return [this](const URLRequest& request, URLConnectionClient& client) -> std::unique_ptr<URLConnection> {
            if (refusesConnections)
                return nullptr;
            exchanges.push_back(std::make_shared<Exchange>(request));
            exchanges.back()->client_ = &client;
            return std::make_unique<Connection>(exchanges.back());
        };
    }
    Exchange& last() { return *exchanges.back(); }

    bool refusesConnections = false;
    std::vector<std::shared_ptr<Exchange>> exchanges;

private:
    class Connection final : public URLConnection {
    public:
        explicit Connection(std::shared_ptr<Exchange> exchange)
            : exchange_(std::move(exchange)) {}
        ~Connection() override { exchange_->client_ = nullptr; }
        void start() override { exchange_->isStarted = true; }
        void cancel() override {
            exchange_->client_ = nullptr;
            exchange_->isCancelled = true;
        }

    private:
        std::shared_ptr<Exchange> exchange_;
    };
};

} // namespace quenby::testing
