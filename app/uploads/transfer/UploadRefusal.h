// What people are told when the Drive takes a file not now and not later.
#pragma once

#include "core/Error.h"

#include <QString>

namespace quenby {

// A sentence of what stands in the way and what to do. Empty: the error's own description says as much as is known.
QString refusalSentence(const Error& error);

} // namespace quenby
