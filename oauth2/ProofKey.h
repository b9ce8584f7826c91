// Proof key for code exchange (RFC 7636): ties the token request to the authorization request, so that a code that
// leaks on the way is worth nothing to whoever finds it.
#pragma once

#include <QString>

namespace quenby::oauth2 {

// 43 characters of the URL-safe alphabet, 256 random bits.
QString makeCodeVerifier();
// The same, for a sign-in's state (RFC 6749, section 10.12).
QString makeState();

// The S256 challenge of a verifier (section 4.2).
QString codeChallengeForVerifier(const QString& verifier);

} // namespace quenby::oauth2
