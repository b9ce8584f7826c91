// What an ending program leaves to the next, as it travels between them. Its uploads are not among it: they stand in
// the journal, which the next one reads.
#pragma once

#include "platform/SingleInstance.h"

#include <QByteArray>
#include <QList>

namespace quenby {

// Paths of files that were handed to the program and wait for a sign-in.
Handover handoverFromFiles(const QList<QByteArray>& files);
// Whatever has another form is left out: the other program may be of another version.
QList<QByteArray> filesFromHandover(const Handover& handover);

} // namespace quenby
