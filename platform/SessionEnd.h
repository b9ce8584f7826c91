// The reasons from outside for which the program is to end: SIGTERM, SIGINT and SIGHUP, and the end of the desktop
// session. Threads: the main thread.
#pragma once

#include "platform/Service.h"

#include <QObject>

namespace quenby {

class SessionEnd : public QObject, public PlatformService {
    Q_OBJECT

Q_SIGNALS:
    void endRequested();
};

} // namespace quenby
