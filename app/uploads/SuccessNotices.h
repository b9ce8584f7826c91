// Notifications of files that are in the Drive now, with their links. Each file has its own, but for a burst.
// Threads: the main thread.
#pragma once

#include "app/uploads/NoticeBurst.h"

#include <QObject>
#include <QString>

#include <map>
#include <memory>

namespace quenby {

class Notifications;
class Opener;
class Pasteboard;

class SuccessNotices : public QObject {
    Q_OBJECT

public:
    SuccessNotices(Notifications& notifications, Pasteboard& pasteboard, Opener& opener,
                   std::shared_ptr<TimeSource> timeSource);

    // Without a link there is nothing to press.
    void tell(const QString& title, const QString& text, const QString& link);

private:
    struct Notice {
        QString title;
        QString text;
        QString link;
    };

    void post(const Notice& notice, const QString& tag);
    void invoke(quint64 identifier, const QString& key);

    Notifications& notifications_;
    Pasteboard& pasteboard_;
    Opener& opener_;
    NoticeBurst burst_;
    std::map<quint64, QString> links_; // by the notification's identifier
};

} // namespace quenby
