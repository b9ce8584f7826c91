#include "app/agent/DefaultsTable.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

#include <utility>

namespace quenby {

bool CheckDefaultsValue(Defaults& defaults) {
    const bool isFirstLogin = !defaults.valueForKey(defaultsKey::launchAtLogin).isValid();
    const std::pair<QString, bool> firstValues[] = {
        {defaultsKey::notificationDisplay, true}, {defaultsKey::launchAtLogin, false},
        {defaultsKey::screenshotShare, false},    {defaultsKey::showMenubarIcon, false},
        {defaultsKey::showUsegeText, false},
    };
    for (const auto& [key, value] : firstValues) {
        if (!defaults.valueForKey(key).isValid())
            defaults.setValueForKey(key, value);
    }
    return isFirstLogin;
}

} // namespace quenby
