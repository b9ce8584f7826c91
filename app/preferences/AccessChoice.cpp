#include "app/preferences/AccessChoice.h"

#include "app/account/DriveConnection.h"
#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

namespace quenby {
namespace {

const QString ownFiles = QStringLiteral("files");

} // namespace

AccessChoice::AccessChoice(DriveConnection& drive, Defaults& defaults)
    : drive_(drive)
    , defaults_(defaults) {
    connect(&defaults_, &Defaults::changed, this, [this](const QString& key) {
        if (key == defaultsKey::driveAccess)
            follow();
    });
    follow();
}

bool AccessChoice::isOffered() const { return !drive_.endpoints().clientConsoleURL.isEmpty(); }

DriveAccess AccessChoice::access() const { return drive_.access(); }

void AccessChoice::choose(DriveAccess access) {
    if (access == DriveAccess::ownFiles)
        defaults_.setValueForKey(defaultsKey::driveAccess, ownFiles);
    else
        defaults_.removeValueForKey(defaultsKey::driveAccess);
}

void AccessChoice::follow() {
    const bool isOwnFiles = isOffered() && defaults_.valueForKey(defaultsKey::driveAccess).toString() == ownFiles;
    const DriveAccess access = isOwnFiles ? DriveAccess::ownFiles : DriveAccess::everything;
    if (access == drive_.access())
        return;
    drive_.setAccess(access);
    Q_EMIT accessChanged(access);
}

} // namespace quenby
