// The first values of the settings that the whole program shares.
#pragma once

namespace quenby {

class Defaults;

// Writes each first value whose key is absent; a value that was chosen stays. Whether launchAtLogin was absent: then
// the login item is to be switched off once.
bool CheckDefaultsValue(Defaults& defaults);

} // namespace quenby
