// Connections that go nowhere. A test plays the server itself, step by step, or says what the answer to each request
// is and lets the network give it.
#pragma once

#include "core/Mailbox.h"
#include "http/GTMHTTPFetcherService.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace quenby::testing {

// Handles what is under way on this thread, as long as it needs no time to pass.
inline void settle() {
    do {
        // No event loop runs around a test, and only a loop would do this.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

struct FakeReply {
    int status = 200;
    QByteArray body{};
    QByteArray contentType = "application/json";
    QByteArray location{};
    MaybeError failure{}; // below HTTP, instead of a response
};

// One thread only. Must outlive the fetchers.
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
            if (client_)
                client_->connectionDidReceiveResponse({request.url, status, headers});
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
            return client_->connectionWillSendRequest(to, {request.url, 302, headers});
        }
        std::optional<Credential> challenge(const AuthenticationChallenge& asked) {
            return client_->connectionDidReceiveChallenge(asked);
        }
        void send(qint64 bytes, qint64 total, qint64 expected) {
            if (client_)
                client_->connectionDidSendBodyData(bytes, total, expected);
        }

    private:
        friend class FakeNetwork;
        URLConnectionClient* client_ = nullptr;
        qint64 bodyLength_ = 0;
    };

    bool refusesConnections = false;
    std::vector<std::shared_ptr<Exchange>> exchanges;
    Exchange& last() { return *exchanges.back(); }

    // Connections whose answers the test gives, by their exchanges.
    URLConnectionFactory factory() {
        return [this](const URLRequest& request, URLConnectionClient& client) {
            return connect(request, client, nullptr);
        };
    }

    // --- Answered by the network ----------------------------------------------------------------------------------

    std::function<FakeReply(const URLRequest&)> handler = [](const URLRequest&) { return FakeReply(); };
    bool isHolding = false; // takes requests and answers them only in answerWaiting() and release()

    struct Request {
        URLRequest request;
        QByteArray body; // also of a stream, which was read
    };
    std::vector<Request> requests; // in the order in which they were started

    // Makes fetchers whose connections get the handler's answers, through the event loop.
    std::shared_ptr<GTMHTTPFetcherService>
    makeFetcherService(std::shared_ptr<TimeSource> time = makeSystemTimeSource()) {
        const auto service = GTMHTTPFetcherService::create(std::move(time));
        service->setConnectionClass(
            [this](const URLRequest& request, URLConnectionClient& client) { return connect(request, client, this); });
        return service;
    }

    qsizetype requestsTo(const QString& path) const {
        return std::count_if(requests.begin(), requests.end(),
                             [&path](const Request& asked) { return asked.request.url.path() == path; });
    }
    size_t waitingCount() {
        std::erase_if(waiting_, [](const auto& exchange) { return !exchange->client_; });
        return waiting_.size();
    }
    void answerWaiting(size_t index = 0) {
        if (index >= waitingCount())
            qFatal("nobody waits for this answer");
        const auto exchange = waiting_[index];
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(index));
        answer(*exchange);
    }
    // Answers everything that waits, and what comes later at once.
    void release() {
        isHolding = false;
        while (waitingCount() > 0)
            answerWaiting();
    }

private:
    class Connection final : public URLConnection {
    public:
        Connection(std::shared_ptr<Exchange> exchange, FakeNetwork* answering)
            : exchange_(std::move(exchange))
            , answering_(answering) {}
        ~Connection() override { exchange_->client_ = nullptr; }
        void start() override {
            exchange_->isStarted = true;
            if (answering_)
                answering_->take(exchange_);
        }
        void cancel() override {
            exchange_->client_ = nullptr;
            exchange_->isCancelled = true;
        }

    private:
        std::shared_ptr<Exchange> exchange_;
        FakeNetwork* answering_; // null: the test answers
    };

    std::unique_ptr<URLConnection> connect(const URLRequest& request, URLConnectionClient& client,
                                           FakeNetwork* answering) {
        if (refusesConnections)
            return nullptr;
        exchanges.push_back(std::make_shared<Exchange>(request));
        exchanges.back()->client_ = &client;
        return std::make_unique<Connection>(exchanges.back(), answering);
    }
    void take(const std::shared_ptr<Exchange>& exchange) {
        const URLRequest& request = exchange->request;
        QByteArray body = request.body;
        if (request.bodyStream)
            body =
                request.bodyLength < 0 ? request.bodyStream->readAll() : request.bodyStream->read(request.bodyLength);
        exchange->bodyLength_ = body.size();
        requests.push_back({request, body});
        if (isHolding)
            waiting_.push_back(exchange);
        else
            Mailbox::forContext(context_.get())->post([this, exchange] { answer(*exchange); });
    }
    void answer(Exchange& exchange) {
        if (!exchange.client_)
            return;
        const FakeReply reply = handler(exchange.request);
        if (const qint64 sent = exchange.bodyLength_; sent > 0)
            exchange.send(sent, sent, sent);
        if (reply.failure)
            return exchange.fail(*reply.failure);
        HeaderFields headers;
        headers.set("Content-Type", reply.contentType);
        if (!reply.location.isEmpty())
            headers.set("Location", reply.location);
        exchange.answer(reply.status, reply.body, headers);
    }

    std::vector<std::shared_ptr<Exchange>> waiting_;
    std::unique_ptr<QObject> context_ = std::make_unique<QObject>();
};

} // namespace quenby::testing
