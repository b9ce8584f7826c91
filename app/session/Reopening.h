// After a failure, waits for the moment at which opening the account is worth another try: the network has come back,
// or, where this computer cannot tell, some time has passed.
//
// Threads: the main thread. Costs nothing while nothing has failed.
#pragma once

#include "core/TimeSource.h"
#include "oauth2/HostReachability.h"

#include <QObject>

#include <chrono>
#include <memory>

namespace quenby {

class Reopening : public QObject {
    Q_OBJECT

public:
    Reopening(QString host, std::shared_ptr<HostReachability> reachability, std::shared_ptr<TimeSource> timeSource);

    void failed();
    void succeeded();

Q_SIGNALS:
    void due();

private:
    void tryLater();

    const QString host_;
    const std::shared_ptr<HostReachability> reachability_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<HostReachability::Watch> watch_;
    bool wasUnreachable_ = false;
    std::chrono::milliseconds pause_;
    std::unique_ptr<Timer> timer_;
};

} // namespace quenby
