#include "app/queuewindow/QueueWindow.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"
#include "platform/FileBrowser.h"
#include "workspace/uploads/UploadQueueWindow.h"

namespace quenby {

QueueWindow::QueueWindow(const Surroundings& surroundings)
    : surroundings_(surroundings)
    , listing_(surroundings.queue, rows_, surroundings.timeSource) {
    connect(&surroundings_.rest, &UploadRest::changed, this, &QueueWindow::showRest);
}

QueueWindow::~QueueWindow() = default;

void QueueWindow::open() {
    if (!window_)
        make();
    window_->bringToFront();
}

bool QueueWindow::minimize() {
    const bool wasVisible = window_ && window_->isVisible() && !window_->isMinimized();
    if (wasVisible)
        window_->showMinimized();
    return wasVisible;
}

void QueueWindow::make() {
    window_ = std::make_unique<UploadQueueWindow>(rows_);
    connectCommands();
    showRest();
}

void QueueWindow::connectCommands() {
    UploadQueue& queue = surroundings_.queue;
    connect(window_.get(), &UploadQueueWindow::pauseRequested, &queue, &UploadQueue::pause);
    connect(window_.get(), &UploadQueueWindow::resumeRequested, &queue, &UploadQueue::resume);
    connect(window_.get(), &UploadQueueWindow::retryRequested, &queue, &UploadQueue::retry);
    connect(window_.get(), &UploadQueueWindow::cancelRequested, &queue,
            qOverload<const QList<qint64>&>(&UploadQueue::cancel));
    connect(window_.get(), &UploadQueueWindow::orderRequested, &queue, &UploadQueue::setOrder);
    connect(window_.get(), &UploadQueueWindow::clearRequested, &listing_, &QueueListing::clearDone);
    connect(window_.get(), &UploadQueueWindow::allPausedRequested, &surroundings_.rest, &UploadRest::setAllPaused);
    connect(window_.get(), &UploadQueueWindow::uploadAnywayRequested, &surroundings_.rest, &UploadRest::uploadAnyway);
    connect(window_.get(), &UploadQueueWindow::rateLimitRequested, this, [this](qint64 bytesPerSecond) {
        surroundings_.defaults.setValueForKey(defaultsKey::uploadRateLimit, bytesPerSecond);
    });
    connect(window_.get(), &UploadQueueWindow::restsOnMeteredRequested, this,
            [this](bool rests) { surroundings_.defaults.setValueForKey(defaultsKey::uploadsRestOnMetered, rests); });
    connect(window_.get(), &UploadQueueWindow::showSourceRequested, this, [this](qint64 number) {
        if (const QueuedUpload* upload = surroundings_.queue.find(number))
            surroundings_.fileBrowser.reveal(upload->request.path, this, [](bool) {});
    });
    connect(window_.get(), &UploadQueueWindow::filesDropped, this, &QueueWindow::filesDropped);
}

void QueueWindow::showRest() {
    if (!window_)
        return;
    const UploadRest& rest = surroundings_.rest;
    window_->setAllPaused(rest.areAllPaused());
    window_->setResting(rest.isResting() ? tr("The connection is metered, so nothing is uploaded.") : QString());
    window_->setRateLimit(rest.rateLimit());
    window_->setRestsOnMetered(rest.restsOnMetered());
}

} // namespace quenby
