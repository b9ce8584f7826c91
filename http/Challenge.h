// What a 401 or 407 response asks for.
#pragma once

#include "http/URLConnection.h"

#include <optional>

namespace quenby {

enum class ChallengeScheme { basic, digest, basicOrDigest };

// The challenge of a response that takes a user and a password, and the best scheme that it offers; nothing when there
// is none, or when a bearer token will do: tokens are the authorizer's business, and its 401 a plain response.
struct PasswordChallenge {
    ChallengeScheme scheme;
    AuthenticationChallenge challenge; // without its failure count
};
std::optional<PasswordChallenge> passwordChallenge(const HTTPResponse& response);

} // namespace quenby
