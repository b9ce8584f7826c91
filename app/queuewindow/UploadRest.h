// When uploads rest: the user wants it, or the connection is metered. And while one gets on, the computer is kept
// awake; while all of them only try again, it may sleep.
//
// Threads: the main thread. What it is given outlives it. It follows the settings, whoever writes them.
#pragma once

#include "core/TimeSource.h"
#include "platform/SleepInhibitor.h"

#include <QObject>

namespace quenby {

class Defaults;
class NetworkCost;
class UploadQueue;

class UploadRest : public QObject {
    Q_OBJECT

public:
    UploadRest(UploadQueue& queue, Defaults& defaults, const NetworkCost& networkCost, SleepInhibitor& sleepInhibitor,
               std::shared_ptr<TimeSource> timeSource);

    // By the user, over restarts.
    bool areAllPaused() const;
    void setAllPaused(bool paused);
    bool restsOnMetered() const;
    // Bytes per second; 0: no limit.
    qint64 rateLimit() const;
    // Because the connection is metered.
    bool isResting() const;
    // Until the connection is another one, or the program ends.
    void uploadAnyway();

Q_SIGNALS:
    void changed();

private:
    void apply();
    void holdAwake();

    UploadQueue& queue_;
    Defaults& defaults_;
    const NetworkCost& networkCost_;
    SleepInhibitor& sleepInhibitor_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<SleepInhibitor::Hold> awake_;
    std::unique_ptr<Timer> letGo_; // while none gets on
    bool isCostAccepted_ = false;
};

} // namespace quenby
