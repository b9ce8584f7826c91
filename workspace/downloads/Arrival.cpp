#include "workspace/downloads/Arrival.h"

#include "workspace/downloads/Landing.h"

#include <QFile>

namespace quenby {
namespace {

// Long enough for a figure that people can read.
constexpr std::chrono::milliseconds measuringTime(1000);

} // namespace

Arrival::Arrival(std::shared_ptr<WebDownload> download, const QByteArray& arrivingPath,
                 std::shared_ptr<TimeSource> timeSource)
    : download_(std::move(download))
    , url_(download_->url())
    , timeSource_(std::move(timeSource))
    , arriving_(arrivingPath)
    , measuredAt_(timeSource_->elapsed()) {
    connect(download_.get(), &WebDownload::changed, this, &Arrival::progressed);
    connect(download_.get(), &WebDownload::ended, this, &Arrival::arrived);
    download_->begin(QFile::decodeName(arriving_));
}

Arrival::~Arrival() {
    download_->disconnect(this);
    if (hasEnded())
        return;
    landing_.cancel();
    download_->cancel();
    QFile::remove(QFile::decodeName(arriving_));
}

QVariantMap Arrival::record() const {
    QVariantMap record{{QStringLiteral("DownloadURL"), url_.toString(QUrl::FullyEncoded)}};
    if (hasDestination())
        record.insert(QStringLiteral("DownloadPath"), QFile::decodeName(destination_));
    return record;
}

void Arrival::setDestination(const QByteArray& path, bool mayReplace) {
    if (hasEnded() || hasDestination())
        return;
    destination_ = path;
    mayReplace_ = mayReplace;
    Q_EMIT changed();
    landWhenReady();
}

void Arrival::pause() { download_->pause(); }

void Arrival::resume() { download_->resume(); }

void Arrival::cancel() {
    if (hasEnded() || landing_.isPending()) // a moment more, and it is whole
        return;
    download_->cancel();
    QFile::remove(QFile::decodeName(arriving_));
    end(State::cancelled);
}

void Arrival::progressed() {
    if (hasEnded() || isWhole_)
        return;
    state_ = download_->state() == WebDownload::State::paused ? State::paused : State::running;
    received_ = download_->receivedBytes();
    total_ = download_->totalBytes();
    const auto now = timeSource_->elapsed();
    if (state_ == State::paused) {
        bytesPerSecond_.reset();
        measuredAt_ = now;
        measuredBytes_ = received_;
    } else if (const auto took = now - measuredAt_; took >= measuringTime) {
        bytesPerSecond_ = (received_ - measuredBytes_) * 1000 / took.count();
        measuredAt_ = now;
        measuredBytes_ = received_;
    }
    Q_EMIT changed();
}

void Arrival::arrived(const MaybeError& error) {
    if (hasEnded())
        return;
    if (error)
        return end(State::failed, error->detail(errorKey::reason).toString());
    if (download_->state() != WebDownload::State::finished)
        return end(State::cancelled);
    received_ = total_ = download_->receivedBytes();
    bytesPerSecond_.reset();
    isWhole_ = true;
    landWhenReady();
}

void Arrival::landWhenReady() {
    if (!isWhole_ || !hasDestination())
        return;
    landing_ = land({arriving_, destination_, mayReplace_}, this, [this](const Result<QByteArray>& path) {
        if (!path)
            return end(State::failed, path.error().detail(errorKey::reason).toString());
        destination_ = *path;
        end(State::finished);
    });
}

void Arrival::end(State state, const QString& reason) {
    if (state != State::finished)
        QFile::remove(QFile::decodeName(arriving_));
    state_ = state;
    reason_ = reason;
    bytesPerSecond_.reset();
    Q_EMIT changed();
    Q_EMIT ended();
}

} // namespace quenby
