// Whether the service does not know the place in its list of changes that it was asked to begin at, a number or a
// token, or wants no such place any more. Anything else that failed may work the next time.
#pragma once

namespace quenby {

class Error;

bool isPlaceRefused(const Error& error);

} // namespace quenby
