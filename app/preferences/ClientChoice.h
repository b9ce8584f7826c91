// Which client the program signs in as: the one in the settings, unless something else decides. Follows the settings,
// whoever writes them.
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

Q_SIGNALS:
    // The connection makes its authorizers for another client from here on. Once for both settings when they change one
    // right after the other. Who is signed in stays so with the former client.
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
