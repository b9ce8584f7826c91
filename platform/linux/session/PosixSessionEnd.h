// Signals, and the session manager's word that the session ends. Losing the session bus is no end. Made after the
// application object, whose session manager it listens to.
#pragma once

#include "platform/SessionEnd.h"
#include "platform/linux/session/ProcessSignals.h"

namespace quenby {

class PosixSessionEnd final : public SessionEnd {
    Q_OBJECT

public:
    explicit PosixSessionEnd(QObject* parent = nullptr);

private:
    ProcessSignals signals_;
};

} // namespace quenby
