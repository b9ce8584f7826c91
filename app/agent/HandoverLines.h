// What an ending program leaves to the next, as it travels between them.
#pragma once

#include "app/agent/HeldUploads.h"
#include "platform/SingleInstance.h"

namespace quenby {

struct PendingWork {
    QList<QByteArray> files; // paths that were handed to the program and wait for a sign-in
    HeldUploads uploads;
};

Handover handoverFromWork(const PendingWork& work);
// Whatever has another form is left out: the other program may be of another version.
PendingWork workFromHandover(const Handover& handover);

} // namespace quenby
