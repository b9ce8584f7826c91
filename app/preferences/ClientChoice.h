// Which client the program signs in as: the one in the settings, unless something else decides. Follows the settings,
// whoever writes them; while somebody is signed in, only once it was decided that this sign-in ends.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/account/ClientIdentity.h"
#include "preferences/account/OwnClient.h"

#include <QObject>

namespace quenby {

class AccountSession;
class Defaults;
class DriveConnection;

class ClientChoice final : public QObject, public OwnClients {
    Q_OBJECT

public:
    ClientChoice(DriveConnection& drive, const AccountSession& session, Defaults& defaults);

    bool isProgramsOwn() const override;
    QString clientID() const override;
    QString decidedElsewhere() const override;
    CompletionTicket tryClient(const OwnClient& client, QObject* context, Tried tried) override;
    void use(const std::optional<OwnClient>& client) override;
    bool isSignedIn() const override;

    // Nobody is signed in any more: the connection makes its authorizers for the chosen client.
    void take();
    // Who is signed in stays so: the settings name that client again.
    void keepFormer();

Q_SIGNALS:
    // The settings name another client. Once for both of them when they change one right after the other. While
    // somebody is signed in, take() or keepFormer() is to follow; else the connection has taken it already.
    void clientChanged();

private:
    ClientIdentity chosen() const;
    void settingChanged(const QString& key);
    void follow();

    DriveConnection& drive_;
    const AccountSession& session_;
    Defaults& defaults_;
    bool isToFollow_ = false; // at the event loop's next turn
};

} // namespace quenby
