#include "app/preferences/LoginItemSwitch.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

#include <QScopedValueRollback>

namespace quenby {

LoginItemSwitch::LoginItemSwitch(LoginItem& item, Defaults& defaults)
    : item_(item)
    , defaults_(defaults) {
    connect(&defaults_, &Defaults::changed, this, [this](const QString& key) {
        if (hasBegun_ && !isFollowing_ && key == defaultsKey::launchAtLogin)
            setStartAtLogin(defaults_.boolForKey(key));
    });
    connect(&item_, &LoginItem::changed, this, [this] {
        if (hasBegun_)
            followDesktop();
    });
}

void LoginItemSwitch::begin(bool isFirstLogin) {
    hasBegun_ = true;
    if (isFirstLogin)
        return setStartAtLogin(false);
    item_.followProgram();
    // Also when the setting says yes and the entry is gone. Many desktops have no other way to switch an entry off than
    // to remove it, and what people have removed must not come back by itself; where settings came to a new computer
    // without the entry, the check box says how it is there, and one click makes it otherwise.
    followDesktop();
}

void LoginItemSwitch::setStartAtLogin(bool isEnabled) {
    const MaybeError error = item_.setEnabled(isEnabled);
    if (!error)
        return;
    Q_EMIT failed(isEnabled ? tr("Error in setting at start at login") : tr("Error in removing at start at login"),
                  error->detail(errorKey::reason).toString());
}

void LoginItemSwitch::followDesktop() {
    if (defaults_.boolForKey(defaultsKey::launchAtLogin) == item_.isEnabled())
        return;
    const QScopedValueRollback following(isFollowing_, true);
    defaults_.setValueForKey(defaultsKey::launchAtLogin, item_.isEnabled());
}

} // namespace quenby
