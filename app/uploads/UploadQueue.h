// Uploads in their order, only a few at once: those that wait hold no open file.
// Threads: the main thread. Destroying it cancels.
#pragma once

#include "app/uploads/DriveServiceProvider.h"
#include "app/uploads/UploadRequest.h"
#include "app/uploads/transfer/UploadRun.h"

#include <QList>
#include <QObject>

#include <chrono>
#include <deque>
#include <map>
#include <memory>

namespace quenby {

class UploadTask;

struct UploadLimits {
    // Fewer than the fetcher service lets run against one host, so that other calls still get through.
    size_t uploadsAtOnce = 4;
    std::chrono::milliseconds patience{std::chrono::minutes(10)}; // with one upload that does not get on
};

class UploadQueue : public QObject {
    Q_OBJECT

public:
    UploadQueue(DriveServiceProvider driveService, std::shared_ptr<TimeSource> timeSource, UploadLimits limits);
    ~UploadQueue() override;

    void add(const UploadRequest& request);
    void cancelAll();
    // Ends all pauses after trouble.
    void tryNow();
    // Those that run, then those that wait.
    QList<UploadRequest> remaining() const;
    size_t waitingCount() const { return waiting_.size(); }

Q_SIGNALS:
    void waitingCountChanged();
    // All of them at once; none of them finishes.
    void cancelled();
    void started(const quenby::UploadRequest& request);
    void progressed(const quenby::UploadRequest& request, qint64 sent, qint64 total); // bytes
    // It goes on, but this stands in its way.
    void troubled(const quenby::UploadRequest& request, const quenby::Error& error);
    // It no longer counts as remaining.
    void finished(const quenby::UploadRequest& request, const quenby::Result<quenby::UploadRun::Outcome>& outcome);

private:
    void startMore();
    void start(const UploadRequest& request);
    void taskFinished(qint64 number, const Result<UploadRun::Outcome>& outcome);

    const DriveServiceProvider driveService_;
    const std::shared_ptr<TimeSource> timeSource_;
    const UploadLimits limits_;
    std::deque<UploadRequest> waiting_;
    std::map<qint64, std::unique_ptr<UploadTask>> running_; // by their numbers
    qint64 lastNumber_ = 0;
};

} // namespace quenby
