// Asks the desktop for an interactive picture of the screen: org.freedesktop.portal.Screenshot. Threads: the main
// thread; nothing here blocks.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"

#include <QByteArray>
#include <QDBusConnection>

#include <functional>

namespace quenby {

// The file that the desktop made, an absolute path; empty when the user declined. The error's reason says what to do.
using ScreenshotTaken = std::function<void(const Result<QByteArray>& path)>;

// Whoever cancels the completion, or destroys its context, takes the question back from the user as well.
CompletionTicket takeInteractiveScreenshot(QObject* context, ScreenshotTaken taken,
                                           const QDBusConnection& bus = QDBusConnection::sessionBus());

} // namespace quenby
