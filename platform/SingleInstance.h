// One running program per desktop session. The newcomer stays: the older one is asked to end, and hands over what it
// still had to do.
//
// Threads: the main thread; nothing blocks.
#pragma once

#include "core/CompletionGate.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QList>
#include <QObject>

#include <functional>

namespace quenby {

// What is handed from an ending program to the next: work in the form of the composition, opaque here.
using Handover = QList<QByteArray>;

class SingleInstance : public QObject, public PlatformService {
    Q_OBJECT

public:
    using Acquired = std::function<void(const Handover& handover)>;

    // Called when a newer instance asks this one to end; answers what is still to be done, and the program is to end
    // soon afterwards (endRequested()).
    virtual void setHandover(std::function<Handover()> handover) = 0;
    // Becomes the one instance. An older one that does not answer within seconds is not waited for. Where there is no
    // session bus, this answers at once.
    virtual void acquire(QObject* context, Acquired acquired) = 0;

Q_SIGNALS:
    void endRequested();
};

} // namespace quenby
