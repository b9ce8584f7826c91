// Whether sending costs the user: a connection that is counted, such as a telephone's. Threads: the main thread.
#pragma once

#include "platform/Service.h"

#include <QObject>

namespace quenby {

class NetworkCost : public QObject, public PlatformService {
    Q_OBJECT

public:
    // False where nobody can tell.
    virtual bool isMetered() const = 0;

Q_SIGNALS:
    // Only when it did.
    void changed();
};

} // namespace quenby
