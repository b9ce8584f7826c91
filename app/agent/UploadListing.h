// Fills the workspace window's list of uploads with what the queue does.
// Threads: the main thread. The queue and the rows outlive it.
#pragma once

#include "app/uploads/UploadQueue.h"

#include <QObject>

#include <map>

namespace quenby {

class UploadRows;

class UploadListing : public QObject {
    Q_OBJECT

public:
    UploadListing(const UploadQueue& queue, UploadRows& rows);

private:
    void remove(qint64 number);
    void started(const UploadRequest& request);
    void progressed(const UploadRequest& request, qint64 sent, qint64 total);
    void troubled(const UploadRequest& request, const Error& error);

    const UploadQueue& queue_;
    UploadRows& rows_;
    std::map<qint64, int> shownPercent_; // of each row, by the request's number
};

} // namespace quenby
