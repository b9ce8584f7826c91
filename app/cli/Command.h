// One verb of the command line: started once the session is open, finished once.
#pragma once

#include "app/cli/Options.h"

#include <QObject>

namespace quenby {

class Command : public QObject {
    Q_OBJECT

public:
    virtual void start() = 0;

Q_SIGNALS:
    void finished(int exitCode);
};

} // namespace quenby
