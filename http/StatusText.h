// HTTP status codes in words.
#pragma once

#include <QString>

namespace quenby {

// The code and its reason phrase, for example "404 Not Found"; the code alone when it has none. The phrase is ours
// (RFC 9110, section 15), not the server's: HTTP/2 sends none, and a server may write anything there.
QString statusText(int statusCode);

} // namespace quenby
