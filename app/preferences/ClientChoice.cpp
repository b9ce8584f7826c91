#include "app/preferences/ClientChoice.h"

#include "app/account/DriveConnection.h"
#include "app/preferences/ClientTrial.h"
#include "app/session/AccountSession.h"
#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

#include <utility>

namespace quenby {

ClientChoice::ClientChoice(DriveConnection& drive, const AccountSession& session, Defaults& defaults)
    : drive_(drive)
    , session_(session)
    , defaults_(defaults) {
    connect(&defaults_, &Defaults::changed, this, &ClientChoice::settingChanged);
}

bool ClientChoice::isProgramsOwn() const { return clientID() == ClientIdentity::ofTheProgram().clientID; }

QString ClientChoice::clientID() const { return chosen().clientID; }

QString ClientChoice::decidedElsewhere() const {
    if (!drive_.endpoints().takesOwnClients())
        return tr("The Drive on this computer takes Quenby's own client only.");
    if (ClientIdentity::isChosenByEnvironment())
        return tr("The client was chosen in the program's environment, by QUENBY_CLIENT_ID.");
    return {};
}

CompletionTicket ClientChoice::tryClient(const OwnClient& client, QObject* context, Tried tried) {
    return beginClientTrial(drive_, client, context, std::move(tried));
}

// The identifier is what counts: an identifier without its secret never stands in the settings for long.
void ClientChoice::use(const std::optional<OwnClient>& client) {
    if (!client)
        defaults_.removeValueForKey(defaultsKey::clientID);
    if (client && !client->clientSecret.isEmpty())
        defaults_.setValueForKey(defaultsKey::clientSecret, client->clientSecret);
    else
        defaults_.removeValueForKey(defaultsKey::clientSecret);
    if (client)
        defaults_.setValueForKey(defaultsKey::clientID, client->clientID);
}

bool ClientChoice::isSignedIn() const { return session_.isSignedIn(); }

void ClientChoice::take() { drive_.setIdentity(chosen()); }

void ClientChoice::keepFormer() {
    const ClientIdentity& former = drive_.identity();
    if (former == chosen())
        return;
    use(former == ClientIdentity::ofTheProgram() ? std::nullopt
                                                 : std::optional(OwnClient{former.clientID, former.clientSecret}));
}

ClientIdentity ClientChoice::chosen() const {
    return drive_.endpoints().takesOwnClients() ? ClientIdentity::chosen(defaults_) : drive_.identity();
}

void ClientChoice::settingChanged(const QString& key) {
    const bool isOurs = key == defaultsKey::clientID || key == defaultsKey::clientSecret;
    if (isOurs && !std::exchange(isToFollow_, true))
        QMetaObject::invokeMethod(this, &ClientChoice::follow, Qt::QueuedConnection);
}

void ClientChoice::follow() {
    isToFollow_ = false;
    if (chosen() == drive_.identity())
        return;
    if (!session_.UserLogin())
        take();
    Q_EMIT clientChanged();
}

} // namespace quenby
