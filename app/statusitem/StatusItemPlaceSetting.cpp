#include "app/statusitem/StatusItemPlaceSetting.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

namespace quenby {

std::optional<StatusItemPlace> statusItemPlaceSetting(const Defaults& defaults) {
    const QString name = defaults.valueForKey(defaultsKey::statusItemPlace).toString();
    if (name == QLatin1String("tray"))
        return StatusItemPlace::tray;
    if (name == QLatin1String("strip"))
        return StatusItemPlace::strip;
    return std::nullopt;
}

StatusItemPlaceSetting::StatusItemPlaceSetting(StatusItemHosts& hosts, const Defaults& defaults, DecidedBy decidedBy,
                                               QObject* parent)
    : QObject(parent) {
    if (decidedBy == DecidedBy::commandLine)
        return;
    hosts.choose(statusItemPlaceSetting(defaults));
    connect(&defaults, &Defaults::changed, this, [&hosts, &defaults](const QString& key) {
        if (key == defaultsKey::statusItemPlace)
            hosts.choose(statusItemPlaceSetting(defaults));
    });
}

} // namespace quenby
