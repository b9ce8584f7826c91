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
#include "app/uploads/transfer/UploadSession.h"
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

class GeneratedIdentifiers;
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
        // What an earlier run came to; a location that is no longer valid, or that the server has forgotten, is given
        // up, the identifier never.
        UploadSession session{};
        // Where an identifier is had before anything is sent. Null: none is asked for.
        std::shared_ptr<GeneratedIdentifiers> identifiers{};
        // Told whenever the session is another; nothing more is sent before `kept` was called, which may happen at
        // once or later, on the main thread, or never. Null: nobody keeps it.
        std::function<void(const UploadSession& session, std::function<void()> kept)> keep{};
        qint64 maxSendSpeed = 0; // bytes per second; 0: no limit
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
    // Ends a pause after trouble: what stood in the way is gone. Not one that the server has asked for.
    void tryNow();
    // Bytes per second; 0: no limit. At once, also in the middle of a chunk.
    void setMaxSendSpeed(qint64 bytesPerSecond);

Q_SIGNALS:
    // Bytes of the file that were sent so far; goes back when the server holds less than was sent.
    void progressed(qint64 bytesSent);
    // The upload goes on, but this stood in its way.
    void troubled(const quenby::Error& error);

private:
    using Step = void (UploadRun::*)();

    // The session
    void begin();
    void takeIdentifier();
    void identifierTaken(const Result<QString>& identifier);
    void giveUpLocation();
    void noteLocation(const QUrl& location);
    void keepSession(std::function<void()> then);

    // Sending
    void send();
    void watch(const GTLServiceTicketPtr& ticket);
    void holdBytes(const GTLServiceTicketPtr& ticket);
    void noteProgress(const GTLServiceTicketPtr& ticket, qint64 sent, qint64 total);
    void bytesAreNext(qint64 held, std::function<void()> goOn);
    bool maySendAgain(const GTLServiceTicketPtr& ticket, bool suggested, const Error& error);
    bool shouldRetry(const Error& error);
    void finishedSending(const GTLObjectPtr& object, const MaybeError& error);

    // Trouble
    void recover(const Error& error, Step step);
    void pause(Step step);
    void lookForCopy(const Error& reason);
    void look();
    void looked(const GTLObjectPtr& object, const MaybeError& error);
    bool mayBeThere(const Error& error) const;
    Error explained(const Error& error) const;

    void startDigest();
    void conclude();
    void finish(const Result<Outcome>& outcome);

    const std::shared_ptr<GTLServiceDrive> service_;
    const std::shared_ptr<TimeSource> timeSource_;
    const SourceFile source_;
    const Settings settings_;
    const std::shared_ptr<GTLQueryDrive> query_; // never executed itself: a copy of it for each try
    CompletionGate<Result<Outcome>> finished_;

    UploadSession session_;
    UploadSession kept_;       // as it was kept last
    quint64 keepNumber_ = 0;   // of the latest question to keep it
    bool isGivenNone_ = false; // the Drive gives no identifiers
    qint64 maxSendSpeed_;

    GTLServiceTicketPtr ticket_;
    qint64 confirmed_ = 0; // the most bytes that the server said it holds
    int lostSessions_ = 0;
    Patience patience_;
    std::unique_ptr<Timer> retryTimer_;
    Step afterPause_ = nullptr;
    std::chrono::milliseconds demandedPause_{0}; // by the server, with its latest refusal
    std::unique_ptr<FileDigest> digest_;
    std::optional<Result<QByteArray>> localSum_;
    std::shared_ptr<GTLDriveFile> copy_; // what the Drive says it holds
    MaybeError doubt_;                   // why the copy was looked for
};

} // namespace quenby
