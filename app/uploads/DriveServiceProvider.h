// How uploads get at the Drive: by asking each time, because users come and go.
#pragma once

#include "core/Error.h"

#include <functional>
#include <memory>

namespace quenby {

class GTLServiceDrive;

// The service of the user who is signed in; null when there is none.
using DriveServiceProvider = std::function<std::shared_ptr<GTLServiceDrive>()>;

// Uploads of no account at all: somebody has to sign in.
Error nobodySignedIn();

} // namespace quenby
