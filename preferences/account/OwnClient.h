// A client that the user registered with the provider, in place of the program's own.
//
// Threads: the main thread.
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "core/Result.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace quenby {

struct OwnClient {
    QString clientID;
    QString clientSecret; // empty: a client without one. Never shown, logged or copied

    friend bool operator==(const OwnClient&, const OwnClient&) = default;
};

// More is no client's file: they have less than a thousand.
inline constexpr qsizetype mostOwnClientBytes = 64 * 1024;

// Reads the JSON file that the provider's console gives for a client (or its text). The error's reason says what the
// file is instead, or what is missing, and what to do. Threads: any.
Result<OwnClient> ownClientFromJSON(const QByteArray& json);

// Which client is used, and whether another one works; the program around the preferences knows.
class OwnClients {
public:
    virtual ~OwnClients() = default;

    using Tried = std::function<void(const MaybeError& trouble)>;

    // Whether the program's own is used, and the identifier of the one that is.
    virtual bool isProgramsOwn() const = 0;
    virtual QString clientID() const = 0;
    // Where it comes from when the settings do not decide, as a sentence; else empty.
    virtual QString decidedElsewhere() const = 0;
    // Asks the provider, without signing anybody in. No error: it knows the client.
    virtual CompletionTicket tryClient(const OwnClient& client, QObject* context, Tried tried) = 0;
    // Stores it; null takes the program's own again. A user who is signed in has to sign in again.
    virtual void use(const std::optional<OwnClient>& client) = 0;
    virtual bool isSignedIn() const = 0;
};

} // namespace quenby
