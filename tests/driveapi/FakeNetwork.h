// The other end of every connection that a test's fetchers make: it keeps the requests and answers as the test says.
#pragma once

#include "core/Mailbox.h"
#include "http/GTMHTTPFetcherService.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QPointer>

#include <vector>

namespace quenby::testing {

struct FakeReply {
    QByteArray body{};
    int status = 200;
    QByteArray contentType = "application/json-rpc; charset=utf-8";
    QByteArray location{};
    MaybeError failure{}; // below HTTP, instead of a response
};

// Handles what is under way on this thread, as long as it needs no time to pass.
inline void settle() {
    do {
        // No event loop runs around a test, and only a loop would do this.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

// One thread only. Must outlive the fetchers.
class FakeNetwork {
public:
    std::function<FakeReply(const URLRequest&)> handler = [](const URLRequest&) { return FakeReply(); };
    bool isHolding = false; // takes requests and answers them only in answerWaiting()

    struct Request {
        URLRequest request;
        QByteArray body;
    };
    std::vector<Request> requests;

    std::shared_ptr<GTMHTTPFetcherService>
    makeFetcherService(std::shared_ptr<TimeSource> time = makeSystemTimeSource()) {
        const auto service = GTMHTTPFetcherService::create(std::move(time));
        service->setConnectionClass([this](const URLRequest& request, URLConnectionClient& client) {
            return std::make_unique<Connection>(*this, request, client);
        });
        return service;
    }

    size_t waitingCount() const { return waiting_.size(); }
    void answerWaiting(size_t index = 0) {
        Connection* const connection = waiting_[index];
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(index));
        connection->answer();
    }

private:
    class Connection final : public URLConnection {
    public:
        Connection(FakeNetwork& network, const URLRequest& request, URLConnectionClient& client)
            : network_(network)
            , request_(request)
            , client_(client) {}
        ~Connection() override { cancel(); }

        void start() override {
            QByteArray body = request_.body;
            if (request_.bodyStream)
                body = request_.bodyLength < 0 ? request_.bodyStream->readAll()
                                               : request_.bodyStream->read(request_.bodyLength);
            bodyLength_ = body.size();
            network_.requests.push_back({request_, body});
            if (network_.isHolding)
                network_.waiting_.push_back(this);
            else
                mailbox_->post([this] { answer(); });
        }
        void cancel() override {
            std::erase(network_.waiting_, this);
            alive_.reset();
        }

        void answer() {
            const QPointer<QObject> alive = alive_.get(); // the client may destroy this from inside any call
            const FakeReply reply = network_.handler(request_);
            if (bodyLength_ > 0)
                client_.connectionDidSendBodyData(bodyLength_, bodyLength_, bodyLength_);
            if (!alive)
                return;
            if (reply.failure)
                return client_.connectionDidFailWithError(*reply.failure);
            client_.connectionDidReceiveResponse(responseOf(reply));
            if (alive && !reply.body.isEmpty())
                client_.connectionDidReceiveData(reply.body);
            if (alive)
                client_.connectionDidFinishLoading();
        }

    private:
        HTTPResponse responseOf(const FakeReply& reply) const {
            HTTPResponse response{request_.url, reply.status, {}};
            response.headers.set("Content-Type", reply.contentType);
            if (!reply.location.isEmpty())
                response.headers.set("Location", reply.location);
            return response;
        }

        FakeNetwork& network_;
        URLRequest request_;
        URLConnectionClient& client_;
        qint64 bodyLength_ = 0;
        std::unique_ptr<QObject> alive_ = std::make_unique<QObject>();
        std::shared_ptr<Mailbox> mailbox_ = Mailbox::forContext(alive_.get());
    };

    std::vector<Connection*> waiting_;
};

} // namespace quenby::testing
