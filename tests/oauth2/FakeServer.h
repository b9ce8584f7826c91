// The other end of every connection of a test, on one thread: it sees the requests and answers when the test lets it.
#pragma once

#include "http/GTMHTTPFetcherService.h"
#include "tests/support/ManualTimeSource.h"

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>
#include <vector>

namespace quenby::testing {

struct Reply {
    int status = 200;
    QByteArray body = {};
    QByteArray contentType = QByteArrayLiteral("application/json");
    MaybeError failure = {}; // below HTTP, instead of a response
};

// Handles everything that is under way on this thread, as long as it needs no time to pass.
inline void settle() {
    for (int round = 0; round < 50; ++round)
        QCoreApplication::processEvents();
}

class FakeServer {
public:
    std::function<Reply(const URLRequest&)> handler;
    std::vector<URLRequest> requests;

    // Until release(), requests are taken and not answered.
    void hold() { isHolding_ = true; }
    // Later requests are answered; those that wait go on waiting.
    void endHold() { isHolding_ = false; }
    void release() {
        endHold();
        releaseOldest(waiting_.size());
    }
    void releaseOldest(size_t count) {
        const auto end = waiting_.begin() + static_cast<ptrdiff_t>(std::min(count, waiting_.size()));
        const std::vector<Connection*> released(waiting_.begin(), end);
        waiting_.erase(waiting_.begin(), end);
        for (Connection* connection : released)
            connection->answerSoon();
    }

    qsizetype requestsTo(const QString& path) const {
        return std::count_if(requests.begin(), requests.end(),
                             [&path](const URLRequest& request) { return request.url.path() == path; });
    }
    std::shared_ptr<GTMHTTPFetcherService> makeService(const std::shared_ptr<TimeSource>& time) {
        const auto service = GTMHTTPFetcherService::create(time);
        service->setConnectionClass([this](const URLRequest& request, URLConnectionClient& client) {
            return std::make_unique<Connection>(*this, request, client);
        });
        return service;
    }

private:
    class Connection final : public URLConnection {
    public:
        Connection(FakeServer& server, const URLRequest& request, URLConnectionClient& client)
            : server_(server)
            , request_(request)
            , client_(client) {}
        ~Connection() override { cancel(); }
        void start() override {
            server_.requests.push_back(request_);
            if (server_.isHolding_)
                server_.waiting_.push_back(this);
            else
                answerSoon();
        }
        void cancel() override {
            std::erase(server_.waiting_, this);
            alive_.reset();
        }
        void answerSoon() {
            QMetaObject::invokeMethod(
                alive_.get(), [this] { answer(); }, Qt::QueuedConnection);
        }

    private:
        void answer() {
            const QPointer<QObject> alive = alive_.get(); // the client may destroy this from inside any call
            const Reply reply = server_.handler(request_);
            if (reply.failure)
                return client_.connectionDidFailWithError(*reply.failure);
            HTTPResponse response{request_.url, reply.status, {}};
            response.headers.set("Content-Type", reply.contentType);
            client_.connectionDidReceiveResponse(response);
            if (alive && !reply.body.isEmpty())
                client_.connectionDidReceiveData(reply.body);
            if (alive)
                client_.connectionDidFinishLoading();
        }

        FakeServer& server_;
        URLRequest request_;
        URLConnectionClient& client_;
        std::unique_ptr<QObject> alive_ = std::make_unique<QObject>();
    };

    bool isHolding_ = false;
    std::vector<Connection*> waiting_;
};

} // namespace quenby::testing
