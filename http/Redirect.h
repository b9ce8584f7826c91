// What a redirect response asks for.
#pragma once

#include "http/URLRequest.h"

#include <optional>

namespace quenby {

// The request that the response redirects to, with its address, method and body but no header fields; nothing when
// the response is no redirect. A 308 without a Location is the plain answer of a resumable upload.
std::optional<URLRequest> redirectedRequest(const URLRequest& request, const HTTPResponse& response);

} // namespace quenby
