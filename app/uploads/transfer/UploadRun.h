// One file on its way to the Drive: announced, sent, taken up again where the server stands after trouble, and compared
// with what arrived.
//
// Threads: the main thread; the MD5 sum is computed on another while the file is sent. Destroying it cancels.
// Errors: whatever refused the file for good, or what kept failing until patience ended; the file that differs from
// its copy, changed meanwhile or could not be read has the domain uploadErrorDomain.
#pragma once

#include "app/uploads/transfer/FileDigest.h"
#include "app/uploads/transfer/Patience.h"
#include "app/uploads/transfer/SourceFile.h"
#include "core/CompletionGate.h"
#include "driveapi/GTLService.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

namespace quenby {

inline const QString uploadErrorDomain = QStringLiteral("org.quenby.Upload");
enum class UploadErrorCode : int { fileChanged = 1, copyDiffers = 2, sumMissing = 3 };

class GTLServiceDrive;
class GTLDriveFile;
class GTLQueryDrive;

class UploadRun : public QObject {
    Q_OBJECT

public:
    struct Settings {
        QString parentId; // the folder's identifier; empty: the top of the Drive
        bool shouldVerify = true;
        std::chrono::milliseconds patience{std::chrono::minutes(10)}; // without getting on
        // The insert to execute, with the file as its media. Null: one with the file's name as title in the folder
        // above.
        std::shared_ptr<GTLQueryDrive> query{};
    };
    struct Outcome {
        QString identifier;
        QString title;
        qint64 bytes = 0;
        QString md5; // as the Drive tells it
        QString originalFilename;
        QString alternateLink; // the file's page in a browser; empty when the Drive tells none
    };
    using Finished = std::function<void(const Result<Outcome>& outcome)>;

    UploadRun(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource, SourceFile source,
              Settings settings);
    ~UploadRun() override;

    void start(QObject* context, Finished finished);
    // Ends a pause after trouble: what stood in the way is gone.
    void tryNow();

Q_SIGNALS:
    // Bytes of the file that were sent so far; goes back when the server holds less than was sent.
    void progressed(qint64 bytesSent);
    // The upload goes on, but this stood in its way.
    void troubled(const quenby::Error& error);

private:
    void send();
    void watch(const GTLServiceTicketPtr& ticket);
    void noteProgress(const GTLServiceTicketPtr& ticket, qint64 sent, qint64 total);
    bool shouldRetry(const Error& error);
    void finishedSending(const GTLObjectPtr& object, const MaybeError& error);
    void recover(const Error& error);
    void beginAnew();
    void conclude();
    MaybeError compare() const;
    void finish(const Result<Outcome>& outcome);
    Error explained(const Error& error) const;

    const std::shared_ptr<GTLServiceDrive> service_;
    const std::shared_ptr<TimeSource> timeSource_;
    const SourceFile source_;
    const Settings settings_;
    const std::shared_ptr<GTLQueryDrive> query_; // never executed itself: a copy of it for each try
    CompletionGate<Result<Outcome>> finished_;

    GTLServiceTicketPtr ticket_;
    QUrl location_;        // of the running session; a secret
    qint64 confirmed_ = 0; // bytes that the server said it holds
    int lostSessions_ = 0;
    Patience patience_;
    std::unique_ptr<Timer> retryTimer_;
    std::unique_ptr<FileDigest> digest_;
    std::optional<Result<QByteArray>> localSum_;
    std::shared_ptr<GTLDriveFile> copy_; // what the Drive says it holds
};

} // namespace quenby
