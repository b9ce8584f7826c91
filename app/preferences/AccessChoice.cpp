#include "app/preferences/AccessChoice.h"

#include "app/account/DriveConnection.h"
#include "app/account/DriveSettings.h"
#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

namespace quenby {

AccessChoice::AccessChoice(DriveConnection& drive, Defaults& defaults)
    : drive_(drive)
    , defaults_(defaults) {
    connect(&defaults_, &Defaults::changed, this, [this](const QString& key) {
        if (key == defaultsKey::driveAccess)
            follow();
    });
    follow();
}

bool AccessChoice::isOffered() const { return drive_.endpoints().takesOwnClients(); }

DriveAccess AccessChoice::access() const { return drive_.access(); }

void AccessChoice::choose(DriveAccess access) { chooseAccess(access, defaults_); }

void AccessChoice::follow() {
    const DriveAccess access = chosenAccess(defaults_, drive_.endpoints());
    if (access == drive_.access())
        return;
    drive_.setAccess(access);
    Q_EMIT accessChanged(access);
}

} // namespace quenby
