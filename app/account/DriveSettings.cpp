#include "app/account/DriveSettings.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

namespace quenby {
namespace {

const QString ownFiles = QStringLiteral("files");       // of driveAccess
const QString roadOfResources = QStringLiteral("rest"); // of apiRoad

} // namespace

DriveAccess chosenAccess(const Defaults& defaults, const Endpoints& endpoints) {
    const bool isOwnFiles =
        endpoints.takesOwnClients() && defaults.valueForKey(defaultsKey::driveAccess).toString() == ownFiles;
    return isOwnFiles ? DriveAccess::ownFiles : DriveAccess::everything;
}

void chooseAccess(DriveAccess access, Defaults& defaults) {
    if (access == DriveAccess::ownFiles)
        defaults.setValueForKey(defaultsKey::driveAccess, ownFiles);
    else
        defaults.removeValueForKey(defaultsKey::driveAccess);
}

APIRoad roadToBeginWith(const Defaults& defaults, const Endpoints& endpoints) {
    return defaults.valueForKey(defaultsKey::apiRoad).toString() == roadOfResources ? APIRoad::rest : endpoints.road;
}

void noteLostRoad(Defaults& defaults) { defaults.setValueForKey(defaultsKey::apiRoad, roadOfResources); }

} // namespace quenby
