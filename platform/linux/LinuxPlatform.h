// The one place that chooses each service's implementation: what was asked for, else what a probe finds, else the form
// that says why there is none.
#pragma once

#include "core/TimeSource.h"
#include "platform/PlatformServices.h"

#include <QStringList>

#include <memory>
#include <optional>

namespace quenby {

struct LinuxPlatformOptions {
    QString profile; // names the settings file, the caches and the web profile: "quenby", or "quenby-local"
    std::optional<StatusItemPlace> statusItemPlace; // absent: a tray where there is one, else the strip
    QStringList loginArguments;                     // with which the login item starts the program
    bool startsWithSession = false; // the desktop's own parts, such as its tray, may still be on their way
};

// Without a display, for programs that have no windows.
AccountStorage makeLinuxAccountStorage(const QString& profile);

PlatformServices makeLinuxPlatform(const LinuxPlatformOptions& options, const std::shared_ptr<TimeSource>& timeSource);

} // namespace quenby
