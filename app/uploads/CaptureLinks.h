// Whoever captures something wants to show it to somebody: once a capture is in the Drive, its link is on the
// clipboard, and a notification says so. Its "Undo" takes the file away and gives the clipboard its former text back.
//
// Captures that arrive within seconds of each other share one notification: it says how many there are, the last one's
// link is what stays on the clipboard, and its "Undo" is for all of them. With notifications switched off the link is
// copied all the same.
//
// Only text can be given back. Where something else was copied before, a picture for example, undoing empties the
// clipboard; and what was copied since then is left alone.
//
// Threads: the main thread.
#pragma once

#include "app/uploads/DriveServiceProvider.h"
#include "app/uploads/transfer/UploadRun.h"
#include "core/TimeSource.h"

#include <QObject>
#include <QStringList>

#include <map>
#include <memory>

namespace quenby {

class Defaults;
class FailureAlerts;
class Notifications;
class Opener;
class Pasteboard;
struct UploadRequest;

// What it works with; everything referred to outlives it.
struct CaptureLinkServices {
    DriveServiceProvider driveService;
    std::shared_ptr<TimeSource> timeSource;
    const Defaults& defaults;
    Notifications& notifications;
    Pasteboard& pasteboard;
    Opener& opener;
    FailureAlerts& failures;
};

class CaptureLinks : public QObject {
    Q_OBJECT

public:
    explicit CaptureLinks(CaptureLinkServices services, QObject* parent = nullptr);

    // What was uploaded. True: its link was copied, and nobody else needs to tell of it. False, and nothing was done:
    // it is no capture, has no link, or the user wants no links.
    bool captured(const UploadRequest& request, const UploadRun::Outcome& outcome);
    // At sign-out: what was told can't be undone any more, and leaves the screen.
    void forget();

Q_SIGNALS:
    // By this program: that change is no news.
    void movedToTrash(const QString& identifier);

private:
    struct File {
        QString identifier;
        QString name; // for people
    };
    struct Batch {
        QString tag; // of its notification
        QList<File> files;
        QString link;       // that was copied
        QString textBefore; // on the clipboard; empty when there was none
    };
    struct Trashing;

    void copyLink(const QString& link);
    void tellSoon();
    void tell();
    void invoke(quint64 identifier, const QString& key);
    void show(const QString& link);
    void undo(const Batch& undone);
    void moveToTrash(const QList<File>& files);
    void trashed(Trashing& trashing, const File& file, const MaybeError& error);
    void post(const QString& text);

    const CaptureLinkServices services_;
    Batch latest_; // without files: the next capture begins another
    std::chrono::milliseconds latestAt_{0};
    int batches_ = 0;
    bool isTold_ = true;             // the notification is as the batch
    quint64 shown_ = 0;              // the latest batch's notification
    std::map<quint64, Batch> told_;  // by the notification's identifier
    std::unique_ptr<Timer> pause_{}; // until the notification may be replaced
};

} // namespace quenby
