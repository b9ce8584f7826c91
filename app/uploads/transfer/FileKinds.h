// What lies at a list of local paths. It is looked at on a thread of its own: ten thousand paths take a while, and one
// on a network that does not answer takes for ever.
#pragma once

#include "core/CompletionGate.h"
#include "core/TimeSource.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <memory>

namespace quenby {

enum class FileKind : quint8 {
    notTold, // the time was up before it was known
    missing,
    regular, // links are followed
    other,   // a folder, a pipe, a device, or what may not be looked at
};

using FileKindsTold = std::function<void(const QList<FileKind>& kinds)>; // one for each path, in their order

// Threads: the context's is the calling one. Nothing waits for the thread: what the kernel holds back ends by itself
// later. Half a minute is what it may take.
void lookAtFiles(const std::shared_ptr<TimeSource>& timeSource, const QList<QByteArray>& paths, QObject* context,
                 FileKindsTold told);

} // namespace quenby
