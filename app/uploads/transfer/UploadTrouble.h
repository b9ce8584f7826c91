// What an error in the middle of an upload, or of any other call, means for what to do next.
#pragma once

#include "core/Error.h"

namespace quenby {

enum class UploadTrouble {
    passing,     // the network or the server is in difficulty; the same again later may work
    lostSession, // the server has forgotten the upload; it must begin anew
    final,       // the same again would fail the same way
};

// hasLocation: the upload was already announced and accepted.
UploadTrouble troubleOf(const Error& error, bool hasLocation);

} // namespace quenby
