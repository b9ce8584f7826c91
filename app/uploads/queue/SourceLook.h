// How files are at this moment, to tell later whether they are still the same. They are looked at on a thread of its
// own: ten thousand take a while, and one on a network that does not answer takes for ever.
#pragma once

#include "app/uploads/transfer/SourceFacts.h"

#include <QList>
#include <QObject>

#include <functional>
#include <optional>

namespace quenby {

using SourcesLookedAt = std::function<void(const QList<std::optional<SourceFacts>>& sources)>;

// One for each path, in their order; absent for what is no regular file. Nothing waits for the thread: what the kernel
// holds back ends by itself later, and is told then if the context still lives.
void lookAtSources(const QList<QByteArray>& paths, QObject* context, SourcesLookedAt told);

} // namespace quenby
