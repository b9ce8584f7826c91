// The "kind" of every Drive resource and the class that stands for it: what the kind registry starts with.
#pragma once

#include "driveapi/GTLClass.h"

#include <span>

namespace quenby {

struct GTLDriveKind {
    const char* kind;
    const GTLClass& (*objectClass)();
};

std::span<const GTLDriveKind> gtlDriveKinds();

} // namespace quenby
