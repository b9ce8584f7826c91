// What to do when a sign-in, a token's renewal or a call to the Drive has failed: the provider's names for what is
// wrong, as sentences for people. Pure functions. Threads: any.
//
// No sentence holds a token, a code, a secret or the query of an address: a server's own words are shown only when
// nothing is known of their name, and without anything in them that could be one.
#pragma once

#include "core/Error.h"

#include <QString>

#include <optional>

namespace quenby {

struct SignInAdvice {
    QString sentence; // what is the matter, and what to do
    bool needsUser;   // nobody else can help; false: it may pass by itself
};

SignInAdvice signInAdvice(const Error& error);
// Of a name such as "invalid_client" or "accessNotConfigured" alone; nothing when it is not known.
std::optional<SignInAdvice> signInAdvice(const QString& providersName);

} // namespace quenby
