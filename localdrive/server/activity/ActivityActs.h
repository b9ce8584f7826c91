// What the invented people of an activity can do with a file: each act is one transaction through the methods of the
// API, so that changes, quota and permissions are as for real calls.
//
// Threads: one at a time.
#pragma once

#include "core/Result.h"
#include "localdrive/server/ServerClock.h"
#include "localdrive/server/activity/InventedFiles.h"
#include "localdrive/store/DriveStore.h"
#include "localdrive/store/IncomingBlob.h"
#include "localdrive/store/Work.h"

#include <QUrl>

#include <functional>

namespace quenby::localdrive {

// A file that belongs to the activity: people's own files, and those of the start set, which are the Drive's owner's.
struct ActivityFile {
    QString id;
    QString title;
    QString mimeType;
    Account editor;     // who may edit it
    bool isOwn = false; // and whether it is theirs, to trash and to delete
    bool isTrashed = false;
};

class ActivityActs {
public:
    ActivityActs(DriveStore& store, const ServerClock& clock, QUrl base);

    Result<bool> isDriveEmpty();
    // The activity's files of this person, oldest first.
    Result<QList<ActivityFile>> filesOf(const Account& person);

    // A file of the person's own, which the Drive's owner may see and edit from its first moment.
    Result<ActivityFile> add(const InventedFile& file, const Account& person);
    // A file of the Drive's owner's, made at that time in that folder ("root" or an id), which the person may edit.
    Result<ActivityFile> addToStart(const InventedFile& file, const Account& editor, const QString& folderId,
                                    const QDateTime& when);
    // A new content, or for native documents a new date. Fails for a file that somebody has trashed.
    Result<void> edit(const ActivityFile& file, const QByteArray& content);
    Result<void> setTrashed(ActivityFile& file, bool isTrashed);
    Result<void> remove(const ActivityFile& file);

private:
    using Act = std::function<Result<QJsonObject>(Work&)>;

    Result<QJsonObject> perform(const Account& person, Session::Kind kind, const Act& act);
    Result<QJsonObject> insert(const InventedFile& file, const Account& owner, const Account& guest,
                               QJsonObject resource);
    Result<std::optional<StagedBlob>> stage(const QByteArray& content);

    DriveStore& store_;
    const ServerClock& clock_;
    const QUrl base_;
};

} // namespace quenby::localdrive
