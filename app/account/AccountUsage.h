// How the account's quota is used, made from what the Drive tells about it.
#pragma once

#include "core/AccountUsage.h"

namespace quenby {

class GTLDriveAbout;

// Services without bytes are left out; what is used is what the services use together, as in the summary.
AccountUsage accountUsage(const GTLDriveAbout& about);

} // namespace quenby
