#include "app/cli/KeptSignIn.h"

namespace quenby {
namespace {

constexpr std::chrono::seconds patienceAtTheEnd(5);

// What the keyring says is good to read; what is missing is the next step.
MaybeError forTheTerminal(KeychainRead outcome, const MaybeError& error, const Keyring& keyring) {
    const auto because = [&error](const QString& reason) {
        const Error fallback(keyringErrorDomain, static_cast<qint64>(KeyringErrorCode::itemNotFound));
        return error.value_or(fallback).withDetail(errorKey::reason, reason);
    };
    switch (outcome) {
    case KeychainRead::authorized:
        return std::nullopt;
    case KeychainRead::notStored:
        return because(QStringLiteral("nobody is signed in; start Quenby and sign in there, or with \"quenby signin\", "
                                      "or use --local, the Drive on this computer"));
    case KeychainRead::notOurs:
        return because(QStringLiteral("the kept sign-in can't be read any more; start Quenby and sign in again"));
    case KeychainRead::unavailable:
        if (const QString reason = keyring.unavailableBecause(); !reason.isEmpty())
            return because(reason);
        break;
    case KeychainRead::locked:
    case KeychainRead::failed:
        break;
    }
    return error;
}

} // namespace

KeptSignIn::KeptSignIn(AccountStorage storage, const Endpoints& endpoints, std::shared_ptr<TimeSource> timeSource)
    : storage_(std::move(storage))
    , timeSource_(std::move(timeSource))
    , name_(endpoints.keychainItemName)
    , keychain_(*storage_.keyring, *storage_.defaults, endpoints, timeSource_) {
    connect(storage_.defaults.get(), &Defaults::troubled, this, &KeptSignIn::troubled);
}

void KeptSignIn::restore(const std::shared_ptr<GTMOAuth2Authentication>& authentication, QObject* context,
                         Restored restored) {
    const CompletionGate<KeychainRead, const MaybeError&> gate(context, std::move(restored));
    keychain_.authorizeFromKeychainForName(name_, authentication, this,
                                           [this, gate](KeychainRead outcome, const MaybeError& error) {
                                               gate.deliver(outcome, forTheTerminal(outcome, error, *storage_.keyring));
                                           });
}

void KeptSignIn::keep(const GTMOAuth2Authentication& authentication) {
    keeping_ = keychain_.saveAuthToKeychainForName(name_, authentication, this, [this](const MaybeError& error) {
        if (error)
            Q_EMIT troubled(QStringLiteral("the sign-in could not be kept, and Quenby will ask for it again: ") +
                            error->detail(errorKey::reason).toString());
        keptOrGivenUp();
    });
}

void KeptSignIn::whenKept(QObject* context, std::function<void()> done) {
    kept_ = {context, std::move(done)};
    if (!keeping_.isPending())
        return keptOrGivenUp();
    patience_ = timeSource_->startTimer(patienceAtTheEnd, [this] { keptOrGivenUp(); });
}

void KeptSignIn::keptOrGivenUp() { kept_.deliver(); }

} // namespace quenby
