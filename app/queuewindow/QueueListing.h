// Fills the queue window's list with what the upload queue does. What is done stays in the list until it is cleared, or
// until there is too much of it.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/queuewindow/TransferRate.h"
#include "app/uploads/UploadQueue.h"
#include "workspace/uploads/QueueRows.h"

#include <QObject>

#include <deque>
#include <map>

namespace quenby {

class QueueListing : public QObject {
    Q_OBJECT

public:
    QueueListing(const UploadQueue& queue, QueueRows& rows, std::shared_ptr<TimeSource> timeSource);

    void clearDone();

private:
    struct Shown {
        TransferRate rate;
        std::chrono::milliseconds at{0}; // when its progress was shown last
    };

    void rebuild();
    void added(const QList<qint64>& numbers);
    void changed(qint64 number);
    void removed(qint64 number);
    void finished(const UploadRequest& request, const Result<UploadRun::Outcome>& outcome);
    QueueRow rowOf(const QueuedUpload& upload) const;

    const UploadQueue& queue_;
    QueueRows& rows_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::map<qint64, Shown> shown_; // of those that run
    std::deque<qint64> done_;       // the oldest first
};

} // namespace quenby
