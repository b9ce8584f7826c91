// The media framework on this machine: starting it, and what of it is not installed.
//
// Threads: any; best not the main one. The first start after a change of packages reads all plug-ins, which takes
// seconds.
#pragma once

#include "core/Result.h"

#include <QByteArray>

namespace quenby {

// Once or more often. Fails with a sentence for people.
Result<void> startFramework();

// The first element of a description ("a b=1 ! c") that is not installed; empty when all are.
QByteArray missingElement(const QByteArray& description);

// For people: what is missing and which package has it.
QString missingElementReason(const QByteArray& element);

} // namespace quenby
