#include "app/pictures/PictureDownload.h"

#include "http/GTMHTTPFetcher.h"

#include <utility>

namespace quenby {

PictureDownload::PictureDownload(std::shared_ptr<GTMHTTPFetcher> fetcher, std::shared_ptr<TimeSource> timeSource,
                                 QObject* parent)
    : QObject(parent)
    , fetcher_(std::move(fetcher))
    , timeSource_(std::move(timeSource)) {}

PictureDownload::~PictureDownload() { fetcher_->stopFetching(); }

void PictureDownload::begin() {
    connect(fetcher_.get(), &GTMHTTPFetcher::notification, this, [this](const QString& name) {
        if (name == kGTMHTTPFetcherStartedNotification && !timer_)
            timer_ = timeSource_->startTimer(patience, [this] { end({}); });
    });
    fetcher_->setReceivedDataBlock([this](const QByteArray& received) {
        if (received.size() > mostBytes)
            end({});
    });
    fetcher_->beginFetchWithCompletionHandler(this, [this](const QByteArray& data, const MaybeError& error) {
        // A body shorter than a piece may end before anybody was told of it.
        end(error || data.size() > mostBytes ? QByteArray() : data);
    });
}

void PictureDownload::end(const QByteArray& bytes) {
    if (std::exchange(hasEnded_, true))
        return;
    fetcher_->disconnect(this);
    fetcher_->stopFetching();
    Q_EMIT ended(bytes);
}

} // namespace quenby
