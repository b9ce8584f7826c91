// All uploads in their order, only a few of them at once: those that wait hold no open file.
//
// With a journal, each is written down before anything of it is sent, and stands there until it is over: a new run of
// the program goes on where this one was ended, however that was. Uploads belong to an account; those of another one
// wait for it.
//
// Threads: the main thread. Destroying it interrupts what runs; nothing is forgotten by that.
#pragma once

#include "app/uploads/DestinationFolders.h"
#include "app/uploads/DriveServiceProvider.h"
#include "app/uploads/queue/QueuedUpload.h"
#include "app/uploads/transfer/UploadRun.h"

#include <QList>
#include <QObject>
#include <QSet>

#include <chrono>
#include <map>
#include <memory>

namespace quenby {

class GeneratedIdentifiers;
class UploadJournal;
class UploadTask;

struct UploadLimits {
    // Fewer than the fetcher service lets run against one host, so that other calls still get through.
    size_t uploadsAtOnce = 4;
    std::chrono::milliseconds patience{std::chrono::minutes(10)}; // with one upload that does not get on
    // After that it makes room for others and comes back later, again and again, instead of having failed.
    bool comesBack = false;
};

class UploadQueue : public QObject {
    Q_OBJECT

public:
    // The folders are shared with whoever else looks for them, and outlive the queue.
    UploadQueue(DriveServiceProvider driveService, DestinationFolders& folders, std::shared_ptr<TimeSource> timeSource,
                UploadLimits limits);
    ~UploadQueue() override;

    // --- What is kept ---------------------------------------------------------------------------------------------

    // Reads what an earlier run left, and writes down everything from now on. Once; what was added before is written
    // down as well. The journal outlives the queue.
    void setJournal(UploadJournal& journal);
    // Nothing is sent or written any more: another program goes on with the journal.
    void release();
    // Whose uploads run, and to whom new ones belong: any text that tells one account from another. What runs for
    // another account is interrupted and waits. Empty at first.
    void setAccount(const QString& account);

    // --- Uploads --------------------------------------------------------------------------------------------------

    void add(const UploadRequest& request) { add(QList<UploadRequest>{request}); }
    void add(const QList<UploadRequest>& requests); // written down in one step
    // Ends those of the account: they are forgotten, and no source is removed.
    void cancelAll();
    void cancel(const QList<qint64>& numbers);
    void pause(const QList<qint64>& numbers);
    void resume(const QList<qint64>& numbers);
    // What failed or changed begins anew, with the file as it is now.
    void retry(const QList<qint64>& numbers);
    // Those that are named stand first, in this order.
    void setOrder(const QList<qint64>& numbers);
    // Those of other accounts become this one's, or are forgotten.
    void adoptOthers();
    void forgetOthers();

    // --- All at once ----------------------------------------------------------------------------------------------

    // While it is on, nothing runs.
    void setHeldBack(bool isHeldBack);
    // Bytes per second for all together; 0: no limit.
    void setMaxSendSpeed(qint64 bytesPerSecond);
    // Ends all pauses after trouble.
    void tryNow();

    // --- What there is --------------------------------------------------------------------------------------------

    // In their order, those of other accounts among them.
    QList<qint64> numbers() const { return order_; }
    const QueuedUpload* find(qint64 number) const;
    bool isOurs(const QueuedUpload& upload) const { return upload.account == account_; }
    // Of the account; those that failed are no longer to be done.
    QList<UploadRequest> remaining() const;
    // Accounts with uploads that wait for them.
    QStringList otherAccounts() const;
    qsizetype otherCount() const;
    size_t runningCount() const { return running_.size(); }
    bool getsOn() const;         // one that runs is in no trouble, as far as is known
    size_t waitingCount() const; // of the account; those that rest are among them
    // What an earlier run left is still being read.
    bool isReading() const { return isReading_; }
    // The files of all, whoever's and however they stand; and whether there are no more than these: as long as they are
    // being read, and when that went wrong, there may be.
    QSet<QByteArray> paths() const;
    bool areAllKnown() const { return !isReading_ && !isMoreWrittenDown_; }

Q_SIGNALS:
    // What an earlier run left is there now.
    void wasRead();
    void added(const QList<qint64>& numbers);
    // Others are its own now; see isOurs().
    void accountChanged();
    // Its state or its progress.
    void changed(qint64 number);
    // It is over, or was cancelled: find() knows it no more. After finished().
    void removed(qint64 number);
    void orderChanged();
    void waitingCountChanged(); // once for many changes, soon after them

    void started(const quenby::UploadRequest& request);
    void progressed(const quenby::UploadRequest& request, qint64 sent, qint64 total); // bytes
    // It goes on, but this stands in its way.
    void troubled(const quenby::UploadRequest& request, const quenby::Error& error);
    // It no longer counts as remaining.
    void finished(const quenby::UploadRequest& request, const quenby::Result<quenby::UploadRun::Outcome>& outcome);
    // Ended without a word to the user: its folder can't be found or made, or its file is gone and may be.
    void leftOut(const quenby::UploadRequest& request, const quenby::Error& error);
    // Its file is another one now; it waits for the user.
    void sourceChanged(const quenby::UploadRequest& request);
    // After an end, and no longer written down: the source is not needed any more.
    void over(const quenby::UploadRequest& request);

private:
    using Entries = std::map<qint64, QueuedUpload>;

    void loaded(const Result<QList<JournalEntry>>& entries);
    void insert(QueuedUpload upload);
    qint64 newNumber() const;
    void sortByPlace();
    void setState(QueuedUpload& upload, UploadState state, const QString& reason = {});
    void writeNew(const QList<qint64>& numbers);
    void rewrite(const QueuedUpload& upload);
    void lookAtSources(const QList<qint64>& numbers);

    bool mayRun(const QueuedUpload& upload) const;
    void startMore();
    void start(QueuedUpload& upload, const std::shared_ptr<GTLServiceDrive>& service);
    void connectTask(UploadTask& task, const UploadRequest& request);
    void keep(qint64 number, const UploadSession& session, const std::function<void()>& kept);
    void taskFinished(qint64 number, const Result<UploadRun::Outcome>& outcome);
    void taskLeftOut(qint64 number, const Error& error);
    void taskFoundChange(qint64 number);
    bool comesBack(QueuedUpload& upload, const Error& error);
    void end(qint64 number);
    bool erase(qint64 number);
    void forget(const UploadRequest& request);
    void interrupt(qint64 number, UploadState becomes);
    void interruptThoseThatMayNot();
    void refuse(const QList<UploadRequest>& requests);
    void shareSpeed();
    void wakeLater();
    void tellWaitingCount();

    const DriveServiceProvider driveService_;
    DestinationFolders& folders_;
    const std::shared_ptr<TimeSource> timeSource_;
    const UploadLimits limits_;
    UploadJournal* journal_ = nullptr;
    bool isReading_ = false;
    bool isMoreWrittenDown_ = false; // perhaps, than is known here: the journal was in trouble
    bool isReleased_ = false;
    bool isHeldBack_ = false;
    bool isCountToBeTold_ = false;
    QString account_;
    qint64 maxSendSpeed_ = 0;

    Entries entries_; // by number
    QList<qint64> order_;
    QSet<qint64> resting_;
    std::map<qint64, std::unique_ptr<UploadTask>> running_; // by number
    size_t ending_ = 0;                                     // that have their place until they are destroyed
    std::shared_ptr<GeneratedIdentifiers> identifiers_;     // of the service below
    std::weak_ptr<GTLServiceDrive> identifiersService_;
    qint64 lastPlace_;              // begins with the time, so that it lies behind what is still being read
    std::unique_ptr<Timer> wakeUp_; // when the next one has rested
};

} // namespace quenby
