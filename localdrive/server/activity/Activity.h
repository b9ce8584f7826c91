// Life in the Drive: invented people who add, edit, trash, restore and delete files of their own and edit those of the
// start set. Nobody touches what the Drive's owner has put there.
//
// The same seed on the same Drive tells the same story: who does what to which title, in which order. Ids and dates
// are as they come.
//
// Threads: one.
#pragma once

#include "localdrive/server/activity/ActivityActs.h"

#include <QRandomGenerator>

namespace quenby::localdrive {

class Activity {
public:
    Activity(DriveStore& store, const ServerClock& clock, QUrl base, quint32 seed);

    // Puts the start set into a Drive that has nothing in it, and otherwise goes on with what an earlier run left.
    Result<void> prepare();
    // One event, on disk when it returns. Tells it as "Mina Okafor trashed Harbour 4.png"; empty when it could not be
    // done, for example because the owner has deleted the file meanwhile or the quota is used up.
    QString step();

private:
    enum class Deed { add, edit, trash, restore, remove };

    Result<void> makeStart();
    Deed nextDeed();
    // The place in files_ of one to which this may happen; -1 when there is none.
    qsizetype pick(Deed deed);
    static QString told(const Account& person, Deed deed, const QString& title);
    QString add();
    Result<void> apply(Deed deed, ActivityFile& file);
    qsizetype count(bool isTrashed) const;

    const ServerClock& clock_;
    ActivityActs acts_;
    QRandomGenerator random_;
    QList<ActivityFile> files_;
};

} // namespace quenby::localdrive
