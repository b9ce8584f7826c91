#include "oauth2/window/KeychainPersistence.h"

#include "oauth2/GTMOAuth2SignIn.h"

#include <QStringDecoder>

#include <algorithm>

namespace quenby {
namespace {

KeyringItem itemForName(const QString& name) { return {name, QStringLiteral("OAuth")}; }

bool is(const Error& error, KeyringErrorCode code) { return error.is(keyringErrorDomain, static_cast<qint64>(code)); }

KeychainRead outcomeOf(const Error& error) {
    if (is(error, KeyringErrorCode::itemNotFound))
        return KeychainRead::notStored;
    if (is(error, KeyringErrorCode::locked))
        return KeychainRead::locked;
    if (is(error, KeyringErrorCode::unavailable))
        return KeychainRead::unavailable;
    return KeychainRead::failed;
}

Error notOursError() {
    return Error(keyringErrorDomain, static_cast<qint64>(KeyringErrorCode::failed),
                 {{errorKey::reason,
                   QStringLiteral("The stored sign-in cannot be read any more. Sign in again; that replaces it.")}});
}

// Whether the stored text made the authorizer able to authorize.
bool apply(const QByteArray& data, GTMOAuth2Authentication& auth) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(data);
    if (decoder.hasError() || text.isEmpty())
        return false;
    auth.setKeysForResponseString(text);
    return auth.canAuthorize();
}

} // namespace

KeychainPersistence::KeychainPersistence(Keyring& keyring, Defaults& defaults, const Endpoints& endpoints,
                                         std::shared_ptr<TimeSource> timeSource)
    : keyring_(keyring)
    , defaults_(defaults)
    , endpoints_(endpoints)
    , timeSource_(std::move(timeSource)) {}

QString KeychainPersistence::prefsKeyForName(const QString& name) { return QStringLiteral("OAuth2: ") + name; }

// --- Saving and removing --------------------------------------------------------------------------------------------

CompletionTicket KeychainPersistence::saveAuthToKeychainForName(const QString& name,
                                                                const GTMOAuth2Authentication& auth, QObject* context,
                                                                Done done) {
    if (!auth.canAuthorize())
        return removeAuthFromKeychainForName(name, context, std::move(done));
    defaults_.removeValueForKey(prefsKeyForName(name));
    const CompletionGate<const MaybeError&> gate(context, std::move(done));
    enqueue(name, [this, name, gate, data = auth.persistenceResponseString().toUtf8()] { save(name, data, gate); });
    return gate.ticket();
}

// The old item goes first: if the new one cannot be written, no stale sign-in is left behind.
void KeychainPersistence::save(const QString& name, const QByteArray& data,
                               const CompletionGate<const MaybeError&>& done) {
    keyring_.remove(itemForName(name), this, [this, name, data, done](const MaybeError& error) {
        if (error) // the user would only be asked a second time
            return finishSave(name, error, done);
        keyring_.write(itemForName(name), data, this,
                       [this, name, done](const MaybeError& writeError) { finishSave(name, writeError, done); });
    });
}

void KeychainPersistence::finishSave(const QString& name, const MaybeError& error,
                                     const CompletionGate<const MaybeError&>& done) {
    if (error)
        Q_EMIT saveFailed(name, *error);
    else if (isLastChangeOf(name)) // a removal that waits has taken the mark already
        defaults_.setValueForKey(prefsKeyForName(name), true);
    done.deliver(error);
    next();
}

CompletionTicket KeychainPersistence::removeAuthFromKeychainForName(const QString& name, QObject* context, Done done) {
    defaults_.removeValueForKey(prefsKeyForName(name));
    const CompletionGate<const MaybeError&> gate(context, std::move(done));
    enqueue(name, [this, name, gate] {
        keyring_.remove(itemForName(name), this, [this, gate](const MaybeError& error) {
            gate.deliver(error);
            next();
        });
    });
    return gate.ticket();
}

// --- Reading --------------------------------------------------------------------------------------------------------

CompletionTicket KeychainPersistence::authorizeFromKeychainForName(const QString& name, const Auth& auth,
                                                                   QObject* context, Authorized authorized) {
    auth->setAccessToken({});
    const CompletionGate<KeychainRead, const MaybeError&> gate(context, std::move(authorized));
    enqueue({}, [this, name, auth, gate] {
        if (!defaults_.boolForKey(prefsKeyForName(name))) {
            gate.deliver(KeychainRead::notStored, MaybeError());
            return next();
        }
        keyring_.read(itemForName(name), this, [this, auth, gate](const Result<QByteArray>& data) {
            if (!data) {
                const KeychainRead outcome = outcomeOf(data.error());
                gate.deliver(outcome, outcome == KeychainRead::notStored ? MaybeError() : MaybeError(data.error()));
            } else if (gate.ticket().isPending()) {
                const bool isOurs = apply(*data, *auth);
                gate.deliver(isOurs ? KeychainRead::authorized : KeychainRead::notOurs,
                             isOurs ? MaybeError() : MaybeError(notOursError()));
            }
            next();
        });
    });
    return gate.ticket();
}

CompletionTicket KeychainPersistence::authForGoogleFromKeychainForName(const QString& name, const QString& clientID,
                                                                       const QString& clientSecret, QObject* context,
                                                                       AuthRead read) {
    const Auth auth =
        GTMOAuth2SignIn::standardGoogleAuthenticationForScope({}, clientID, clientSecret, endpoints_, timeSource_);
    return authorizeFromKeychainForName(
        name, auth, context,
        [auth, read = std::move(read)](KeychainRead outcome, const MaybeError& error) { read(auth, outcome, error); });
}

// --- One after the other --------------------------------------------------------------------------------------------

void KeychainPersistence::enqueue(const QString& changes, std::function<void()> run) {
    operations_.push_back({changes, std::move(run)});
    if (operations_.size() == 1)
        runFirst();
}

void KeychainPersistence::next() {
    operations_.pop_front();
    if (!operations_.empty())
        runFirst();
}

void KeychainPersistence::runFirst() {
    const auto run = operations_.front().run; // it may end, and be removed, before it returns
    run();
}

bool KeychainPersistence::isLastChangeOf(const QString& name) const {
    return std::count_if(operations_.cbegin(), operations_.cend(),
                         [&name](const Operation& operation) { return operation.changes == name; }) == 1;
}

} // namespace quenby
