// What the settings say about how the Drive is used, for the desktop program and for commands alike.
//
// Threads: the main thread.
#pragma once

#include "core/DriveAccess.h"
#include "core/Endpoints.h"

namespace quenby {

class Defaults;

// What the next sign-in asks for. A Drive without a console gives everything to everybody, whatever is chosen.
DriveAccess chosenAccess(const Defaults& defaults, const Endpoints& endpoints);
void chooseAccess(DriveAccess access, Defaults& defaults);

// The road to begin with: the endpoints' own, until it was noted that the service has lost the first one.
APIRoad roadToBeginWith(const Defaults& defaults, const Endpoints& endpoints);
void noteLostRoad(Defaults& defaults);

} // namespace quenby
