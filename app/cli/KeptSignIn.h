// The sign-in that the desktop program keeps in the keyring, for commands.
//
// Threads: the main thread; nothing blocks. A locked keyring is waited for while the desktop asks the user for its
// password.
#pragma once

#include "app/account/ClientIdentity.h"
#include "core/CompletionGate.h"
#include "core/TimeSource.h"
#include "oauth2/window/KeychainPersistence.h"
#include "platform/PlatformServices.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class KeptSignIn : public QObject {
    Q_OBJECT

public:
    using Restored = std::function<void(KeychainRead outcome, const MaybeError& error)>;

    KeptSignIn(AccountStorage storage, const Endpoints& endpoints, std::shared_ptr<TimeSource> timeSource);

    // The settings that the desktop program has.
    const Defaults& defaults() const { return *storage_.defaults; }
    // The client that the sign-in was made with.
    ClientIdentity identity() const { return ClientIdentity::chosen(*storage_.defaults); }
    // Why nothing can be kept, for people; empty when it can.
    QString unavailableBecause() const { return storage_.keyring->unavailableBecause(); }
    // Reads it into the authorizer. The error says what to do; there is none exactly for KeychainRead::authorized.
    void restore(const std::shared_ptr<GTMOAuth2Authentication>& authentication, QObject* context, Restored restored);
    // Replaces it by the authorizer's.
    void keep(const GTMOAuth2Authentication& authentication);
    // Once nothing is being written any more: a program that ends too early would leave half of it behind. A keyring
    // that hangs is not waited for.
    void whenKept(QObject* context, std::function<void()> done);

Q_SIGNALS:
    // For people: about the settings or the keyring; the work goes on.
    void troubled(const QString& sentence);

private:
    void keptOrGivenUp();

    const AccountStorage storage_;
    const std::shared_ptr<TimeSource> timeSource_;
    const QString name_;
    KeychainPersistence keychain_;
    CompletionTicket keeping_;
    CompletionGate<> kept_;
    std::unique_ptr<Timer> patience_;
};

} // namespace quenby
