// Notifications of files that are in the Drive now, with their links. Each file has its own, but for a burst: what
// exceeds a few within a few seconds shares one notification, which is replaced as the number grows.
// Threads: the main thread.
#pragma once

#include "core/TimeSource.h"

#include <QObject>
#include <QString>

#include <deque>
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
    ~SuccessNotices() override;

    // Without a link there is nothing to press.
    void tell(const QString& title, const QString& text, const QString& link);

private:
    struct Notice {
        QString title;
        QString text;
        QString link;
    };

    bool isBurst();
    void postShared();
    void endBurst();
    void post(const Notice& notice, const QString& tag);
    void invoke(quint64 identifier, const QString& key);

    Notifications& notifications_;
    Pasteboard& pasteboard_;
    Opener& opener_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::deque<std::chrono::milliseconds> recent_; // when the latest notices came
    Notice latest_;                                // of the burst
    int sharing_ = 0;                              // notices in the burst's notification
    int shown_ = 0;                                // how many of them it tells of so far
    int burst_ = 0;                                // the bursts' numbers, for their tags
    std::unique_ptr<Timer> pause_;                 // until the shared one may be replaced again
    std::map<quint64, QString> links_;             // by the notification's identifier
};

} // namespace quenby
