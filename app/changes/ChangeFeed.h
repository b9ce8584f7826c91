// Polls the Drive's change list while somebody is signed in, each poll 30 seconds after the one before was answered,
// and keeps the store of the latest changes.
//
// A poll begins behind the last change of the answer before, by its number, or by a page token where the service gives
// changes no numbers. A failed poll is repeated like any other, 30 seconds later, and from the beginning; nobody is
// told of it. A service that refuses the numbers is followed by tokens from then on.
//
// Threads: the main thread; answers are taken apart on the Drive service's parse queue. What it is given outlives it.
#pragma once

#include "app/changes/ChangeStore.h"
#include "app/changes/ServerClock.h"
#include "core/TimeSource.h"
#include "driveapi/GTLService.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class Defaults;
class FeedPages;
class GTLServiceDrive;

class ChangeFeed : public QObject {
    Q_OBJECT

public:
    // Answers the address of the sharing page up to the file's identifier, a secret; empty when there is none. Asked at
    // each poll: it changes with the sign-in.
    using SharingAddress = std::function<QString()>;

    ChangeFeed(std::shared_ptr<GTLServiceDrive> driveService, const Defaults& defaults, SharingAddress strSHARE,
               std::shared_ptr<TimeSource> timeSource);
    ~ChangeFeed() override;

    // Polls now, and from then on again and again until clear(). A poll that runs or waits is given up for this one, so
    // that there is never more than one chain.
    void GetChangeListGoogleDrive();
    // Signed out: nothing is known any more, and nothing is polled.
    void clear();
    // A file that this process uploaded: its next notification is left out.
    void addUploaded(const QString& identifier);

    const QList<ChangeRecord>& DriveChangeInfoAPI() const { return store_.DriveChangeInfoAPI; }
    // Of a file in the list; empty for every other.
    QString resourceKeyOf(const QString& identifier) const;
    // No first answer yet, and one is on its way, or will be asked for again.
    bool isFetchingFirst() const { return isPolling_ && !isAnswered_; }

Q_SIGNALS:
    // The list shows something else now, or isFetchingFirst() changed. Not after a poll that brought nothing.
    void changed();
    void noticed(const quenby::ChangeNotice& notice);

private:
    void poll();
    void answered(const GTLServiceTicket& ticket, const MaybeError& error);
    // What is on its way through another thread knows nothing of the uploads that ended meanwhile.
    void leaveOutUploaded(PolledStore& polled);
    void completed(PolledStore polled);
    void tellChanged();
    void giveUpPoll();

    const std::shared_ptr<GTLServiceDrive> driveService_;
    const Defaults& defaults_;
    const SharingAddress strSHARE_;
    const std::shared_ptr<TimeSource> timeSource_;
    ServerClock serverClock_;
    ChangeStore store_;
    bool isPolling_ = false;          // from GetChangeListGoogleDrive() to clear()
    bool isAnswered_ = false;         // a poll has succeeded since then
    bool saidFetchingFirst_ = false;  // isFetchingFirst() at the last changed()
    QSet<QString> uploadedMeanwhile_; // since the last answer came
    quint64 number_ = 0;              // of the poll: what an earlier one brings is ignored
    GTLServiceTicketPtr ticket_;
    std::unique_ptr<FeedPages> pages_; // of the answer so far; null when there was something else in it
    CompletionTicket completion_;
    std::unique_ptr<Timer> nextPoll_;
};

} // namespace quenby
