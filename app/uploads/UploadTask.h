// One request whose turn has come: opens the file and sends it. Threads: the main thread. Destroying it cancels.
// Errors: those of app/uploads/transfer/SourceOpening.h and UploadRun.h.
#pragma once

#include "app/uploads/UploadRequest.h"
#include "app/uploads/transfer/SourceOpening.h"
#include "app/uploads/transfer/UploadRun.h"

#include <QObject>

namespace quenby {

class UploadTask : public QObject {
    Q_OBJECT

public:
    // A null service fails the upload.
    UploadTask(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource, UploadRequest request,
               std::chrono::milliseconds patience);
    ~UploadTask() override;

    const UploadRequest& request() const { return request_; }
    void start(QObject* context, UploadRun::Finished finished);
    // Ends a pause after trouble.
    void tryNow();

Q_SIGNALS:
    // Bytes of the file.
    void progressed(qint64 sent, qint64 total);
    void troubled(const quenby::Error& error);

private:
    void opened(const Result<SourceFile>& source);

    const std::shared_ptr<GTLServiceDrive> service_;
    const std::shared_ptr<TimeSource> timeSource_;
    const UploadRequest request_;
    const std::chrono::milliseconds patience_;
    CompletionGate<Result<UploadRun::Outcome>> finished_;
    std::unique_ptr<SourceOpening> opening_;
    std::unique_ptr<UploadRun> run_;
};

} // namespace quenby
