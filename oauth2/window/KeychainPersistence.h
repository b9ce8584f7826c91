// Keeps a sign-in from one start of the program to the next: one item in the keyring per name, and a mark among the
// settings that this installation stored it. An item without the mark, left by another installation for instance, is
// never read.
//
// Threads: the main thread; nothing blocks. Operations run one after the other in the order of the calls, so that a
// removal that is asked for during a save comes out last. A locked keyring is waited for without limit. Cancelling a
// ticket keeps the answer away, and a read from changing the authorizer; a save or removal is carried out all the same.
#pragma once

#include "core/CompletionGate.h"
#include "core/Endpoints.h"
#include "core/TimeSource.h"
#include "platform/Defaults.h"
#include "platform/Keyring.h"

#include <QObject>

#include <deque>

namespace quenby {

class GTMOAuth2Authentication;

enum class KeychainRead {
    authorized,  // the authorizer can authorize now
    notStored,   // this installation stored nothing, or the item is gone: only a sign-in helps
    notOurs,     // the item does not hold what was written: only a sign-in helps
    locked,      // the user did not unlock the keyring. Not signed out: Keyring::becameAvailable() tells when to retry
    unavailable, // there is no keyring (any more). Likewise
    failed,      // anything else the keyring said; the error tells
};

class KeychainPersistence : public QObject {
    Q_OBJECT

public:
    using Auth = std::shared_ptr<GTMOAuth2Authentication>;
    // Without an error exactly for authorized and notStored.
    using Authorized = std::function<void(KeychainRead outcome, const MaybeError& error)>;
    using AuthRead = std::function<void(const Auth& auth, KeychainRead outcome, const MaybeError& error)>;
    using Done = std::function<void(const MaybeError& error)>;

    KeychainPersistence(Keyring& keyring, Defaults& defaults, const Endpoints& endpoints,
                        std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource());

    // Of the mark among the settings.
    static QString prefsKeyForName(const QString& name);

    // Replaces what was stored. An authorizer that cannot authorize leaves nothing stored, and that is no error.
    CompletionTicket saveAuthToKeychainForName(const QString& name, const GTMOAuth2Authentication& auth,
                                               QObject* context = nullptr, Done done = {});
    // The mark is gone when this returns.
    CompletionTicket removeAuthFromKeychainForName(const QString& name, QObject* context = nullptr, Done done = {});
    // Forgets the authorizer's access token at once, then reads the stored sign-in into it.
    CompletionTicket authorizeFromKeychainForName(const QString& name, const Auth& auth, QObject* context,
                                                  Authorized authorized);
    // The same with an authorizer of the service's own, which is never null.
    CompletionTicket authForGoogleFromKeychainForName(const QString& name, const QString& clientID,
                                                      const QString& clientSecret, QObject* context, AuthRead read);

Q_SIGNALS:
    // The sign-in is good, but will not be there at the next start. For whoever did not wait for the save.
    void saveFailed(const QString& name, const quenby::Error& error);

private:
    struct Operation {
        QString changes;           // the name whose item it changes; empty for a read
        std::function<void()> run; // calls next() when it has ended
    };

    void enqueue(const QString& changes, std::function<void()> run);
    void next();
    void runFirst();
    bool isLastChangeOf(const QString& name) const;
    void save(const QString& name, const QByteArray& data, const CompletionGate<const MaybeError&>& done);
    void finishSave(const QString& name, const MaybeError& error, const CompletionGate<const MaybeError&>& done);

    Keyring& keyring_;
    Defaults& defaults_;
    const Endpoints endpoints_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::deque<Operation> operations_; // the first one runs
};

} // namespace quenby
