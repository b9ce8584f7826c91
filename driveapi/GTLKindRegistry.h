// Which class stands for which "kind" of a reply. Process-wide; every function may be called from any thread.
#pragma once

#include "driveapi/GTLClass.h"

#include <string_view>

namespace quenby::gtlKinds {

// Null when the kind is unknown.
const GTLClass* classForKind(std::string_view kind);
// Registering a kind again replaces the earlier class.
void registerClassForKind(const GTLClass& objectClass, std::string_view kind);

} // namespace quenby::gtlKinds
