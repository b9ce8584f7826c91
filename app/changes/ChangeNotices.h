// Tells the desktop of changes: one notification each, with "Open" and "Share" where the service draws buttons and the
// file can be opened; a click opens. A file's later notification takes the place of its earlier one; a burst is summed
// up instead of burying the desktop.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/changes/ChangeStore.h"
#include "app/uploads/NoticeBurst.h"

#include <QObject>

#include <map>

namespace quenby {

class Notifications;

class ChangeNotices : public QObject {
    Q_OBJECT

public:
    ChangeNotices(Notifications& notifications, std::shared_ptr<TimeSource> timeSource);

    // The title of the notification is "Quenby New Update!".
    void tell(const ChangeNotice& notice);
    // Signed out: takes the notifications off the screen; what they offered is for nobody any more.
    void clear();

Q_SIGNALS:
    void openRequested(const quenby::ChangeRecord& record);
    // The record's link may have lost its validity by now.
    void shareRequested(const QString& identifier, const QString& title);

private:
    void post(const ChangeNotice& notice, const QString& burstTag, const QString& more);
    void invoke(quint64 identifier, const QString& key);

    Notifications& notifications_;
    NoticeBurst burst_;
    std::map<quint64, ChangeRecord> records_; // by the notification's identifier
};

} // namespace quenby
