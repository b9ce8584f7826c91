// Why a path cannot be uploaded, in words that say what to do.
#pragma once

#include "core/Error.h"

#include <QByteArray>

#include <sys/types.h>

namespace quenby {

// What errno says about the path right after a call on it has failed.
Error openError(const QByteArray& path);

// The error for what is not a regular file; nothing for what is.
MaybeError refuseSpecialFile(mode_t mode);

} // namespace quenby
