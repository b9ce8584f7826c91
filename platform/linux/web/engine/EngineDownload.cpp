#include "platform/linux/web/engine/EngineDownload.h"

#include "platform/linux/web/engine/DownloadError.h"

#include <QFile>
#include <QFileInfo>
#include <QWebEngineDownloadRequest>
#include <QWebEngineProfile>

namespace quenby {

EngineDownload::EngineDownload(QWebEngineDownloadRequest& request, std::shared_ptr<QWebEngineProfile> profile)
    : profile_(std::move(profile))
    , request_(&request)
    , id_(request.id())
    , url_(request.url())
    , suggestedFileName_(request.suggestedFileName())
    , mimeType_(request.mimeType())
    , totalBytes_(request.totalBytes()) {
    setParent(profile_.get());
}

EngineDownload::~EngineDownload() {
    setParent(nullptr); // the profile may go with this, its last holder
    if (request_)
        request_->disconnect(this);
    if (state_ == State::running || state_ == State::paused)
        removeArrived();
}

void EngineDownload::dropUnlessBegun() {
    if (state_ == State::offered)
        state_ = State::cancelled;
}

bool EngineDownload::goesOnWith(QWebEngineProfile& profile, QWebEngineDownloadRequest& request) {
    for (auto* download : profile.findChildren<EngineDownload*>(Qt::FindDirectChildrenOnly)) {
        if (download->id_ != request.id() || download->state_ != State::running)
            continue;
        if (download->request_)
            download->request_->disconnect(download);
        download->request_ = &request;
        download->accept();
        return true;
    }
    return false;
}

void EngineDownload::begin(const QString& path) {
    if (state_ != State::offered || !request_)
        return;
    path_ = path;
    state_ = State::running;
    accept();
    tellChanged();
}

void EngineDownload::accept() {
    connect(request_, &QWebEngineDownloadRequest::receivedBytesChanged, this, &EngineDownload::readBytes);
    connect(request_, &QWebEngineDownloadRequest::totalBytesChanged, this, &EngineDownload::readBytes);
    connect(request_, &QWebEngineDownloadRequest::stateChanged, this, &EngineDownload::readState);
    connect(request_, &QWebEngineDownloadRequest::isPausedChanged, this, &EngineDownload::readState);
    const QFileInfo file(path_);
    request_->setDownloadDirectory(file.path());
    request_->setDownloadFileName(file.fileName()); // after the folder, for which the engine makes up a name
    request_->accept();
}

void EngineDownload::pause() {
    if (state_ == State::running && request_)
        request_->pause();
}

void EngineDownload::resume() {
    if (state_ == State::paused && request_)
        request_->resume();
}

void EngineDownload::cancel() {
    if (state_ != State::running && state_ != State::paused)
        return;
    if (request_)
        request_->disconnect(this);
    removeArrived();
    end(State::cancelled, {});
}

void EngineDownload::readBytes() {
    receivedBytes_ = request_->receivedBytes();
    totalBytes_ = request_->totalBytes();
    tellChanged();
}

void EngineDownload::readState() {
    switch (request_->state()) {
    case QWebEngineDownloadRequest::DownloadRequested:
        return;
    case QWebEngineDownloadRequest::DownloadInProgress:
        state_ = request_->isPaused() ? State::paused : State::running;
        return tellChanged();
    case QWebEngineDownloadRequest::DownloadCompleted:
        readBytes();
        request_->disconnect(this);
        return end(State::finished, {});
    case QWebEngineDownloadRequest::DownloadCancelled: // by the engine: its profile's data are being cleared
        request_->disconnect(this);
        return end(State::cancelled, {});
    case QWebEngineDownloadRequest::DownloadInterrupted: {
        const Error error = downloadError(request_->interruptReason(), url_.host());
        request_->disconnect(this);
        removeArrived();
        return end(State::failed, error);
    }
    }
}

void EngineDownload::end(State state, const MaybeError& error) {
    state_ = state;
    tellChanged();
    later([this, error] { Q_EMIT ended(error); });
}

// Bytes arrive more often than anybody needs to hear of them: once a round of the event loop.
void EngineDownload::tellChanged() {
    if (std::exchange(isTellingChanged_, true))
        return;
    later([this] {
        isTellingChanged_ = false;
        Q_EMIT changed();
    });
}

void EngineDownload::removeArrived() {
    if (request_)
        request_->cancel();
    // The engine collects it under this name, and leaves it there when it has given up by itself.
    QFile::remove(path_ + QStringLiteral(".download"));
}

void EngineDownload::later(std::function<void()> function) {
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}

} // namespace quenby
