// The same on a desktop that gives its contents to nobody: it is asked for a picture by its portal, which lets the user
// choose. Threads: the main thread.
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QObject>

#include <functional>

namespace quenby {

// Without an error, the picture lies at the path or the user declined. Never called from inside.
void captureByPortal(const QByteArray& path, QObject* context, std::function<void(const MaybeError& error)> ended);

} // namespace quenby
