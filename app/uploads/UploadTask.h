// One upload whose turn has come: finds its folder, opens its file, sees whether it is still the one that was meant,
// and sends it. Threads: the main thread. Destroying it interrupts; what the Drive holds by then stays of use.
// Errors: those of app/uploads/transfer/SourceOpening.h and UploadRun.h.
#pragma once

#include "app/uploads/DestinationFolders.h"
#include "app/uploads/queue/QueuedUpload.h"
#include "app/uploads/transfer/SourceOpening.h"
#include "app/uploads/transfer/UploadRun.h"

#include <QObject>

namespace quenby {

class UploadTask : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        std::shared_ptr<GTLServiceDrive> service;
        DestinationFolders& folders;
        std::shared_ptr<TimeSource> timeSource;
        std::chrono::milliseconds patience;
        std::shared_ptr<GeneratedIdentifiers> identifiers;
        std::function<void(const UploadSession& session, std::function<void()> kept)> keep; // see UploadRun::Settings
    };

    UploadTask(Surroundings surroundings, QueuedUpload upload);
    ~UploadTask() override;

    const UploadRequest& request() const { return upload_.request; }
    // It ends by one of the last three signals, none of them from inside.
    void start();
    // Ends a pause after trouble.
    void tryNow();
    void setMaxSendSpeed(qint64 bytesPerSecond);
    // Nothing is kept any more, and it is destroyed when nothing of it is on the stack.
    void stop();

Q_SIGNALS:
    void folderFound(const QString& identifier);
    // It is on its way: its folder is known.
    void started();
    void opened(const quenby::SourceFacts& source);
    // Bytes of the file.
    void progressed(qint64 sent, qint64 total);
    void troubled(const quenby::Error& error);

    void finished(const quenby::Result<quenby::UploadRun::Outcome>& outcome);
    void leftOut(const quenby::Error& error);
    void foundChange();

private:
    void openSource();
    void sourceOpened(const Result<SourceFile>& source);
    bool isAnotherFile(const SourceFacts& now) const;
    void send(const SourceFile& source);

    const Surroundings surroundings_;
    QueuedUpload upload_;
    bool isStopped_ = false;
    qint64 maxSendSpeed_ = 0;
    std::unique_ptr<SourceOpening> opening_;
    std::unique_ptr<UploadRun> run_;
};

} // namespace quenby
