#include "bench/popover/MemoryNetwork.h"

#include "http/CurlConnection.h"

#include <QLocale>
#include <QPointer>

#include <algorithm>

namespace quenby::bench {
namespace {

constexpr qsizetype pieceBytes = 512 * 1024;

QByteArray httpDate(const QDateTime& date) {
    return QLocale::c().toString(date.toUTC(), u"ddd, dd MMM yyyy hh:mm:ss 'GMT'").toLatin1();
}

} // namespace

// One turn of the event loop for the head, one for each piece, and one for the end.
class MemoryNetwork::Connection final : public URLConnection {
public:
    Connection(MemoryNetwork& network, QUrl url, URLConnectionClient& client, Answer answer)
        : network_(network)
        , url_(std::move(url))
        , client_(client)
        , answer_(std::move(answer)) {}

    void start() override {
        inNextTurn([this] {
            HeaderFields headers;
            headers.set("Content-Type", "application/json; charset=UTF-8");
            headers.set("Date", httpDate(answer_.date));
            client_.connectionDidReceiveResponse({url_, 200, headers});
        });
    }
    void cancel() override { turns_.reset(); }

private:
    // The client may destroy the connection in each of them.
    void inNextTurn(std::function<void()> step) {
        QMetaObject::invokeMethod(
            turns_.get(),
            [this, step = std::move(step)] {
                const QPointer<QObject> turns = turns_.get();
                step();
                if (turns)
                    goOn();
            },
            Qt::QueuedConnection);
    }

    void goOn() {
        if (sent_ < answer_.body.size())
            return inNextTurn([this] { sendPiece(); });
        if (!hasEnded_) {
            hasEnded_ = true;
            inNextTurn([this] { client_.connectionDidFinishLoading(); });
        }
    }

    void sendPiece() {
        const qsizetype size = std::min(pieceBytes, answer_.body.size() - sent_);
        const QByteArrayView piece(answer_.body.constData() + sent_, size);
        sent_ += size;
        if (sent_ == answer_.body.size())
            network_.lastPiece_ = Moment::now();
        client_.connectionDidReceiveData(piece);
    }

    MemoryNetwork& network_;
    const QUrl url_;
    URLConnectionClient& client_;
    const Answer answer_;
    std::unique_ptr<QObject> turns_ = std::make_unique<QObject>();
    qsizetype sent_ = 0;
    bool hasEnded_ = false;
};

URLConnectionFactory MemoryNetwork::factory() {
    return [this](const URLRequest& request, URLConnectionClient& client) -> std::unique_ptr<URLConnection> {
        if (answers_.empty())
            return CurlConnection::create(request, client);
        Answer answer = std::move(answers_.front());
        answers_.pop_front();
        return std::make_unique<Connection>(*this, request.url, client, std::move(answer));
    };
}

} // namespace quenby::bench
