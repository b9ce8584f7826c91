// Asks the token server whether it knows a client, without signing anybody in: it is shown an authorization code that
// does not exist. A server checks the client before it looks at the code (RFC 6749, sections 4.1.3 and 5.2).
#pragma once

#include "preferences/account/OwnClient.h"

namespace quenby {

class DriveConnection;

// The error says in a sentence what is wrong with the client, or why nothing could be learned of it. Cancelling keeps
// the answer away.
CompletionTicket beginClientTrial(const DriveConnection& drive, const OwnClient& client, QObject* context,
                                  OwnClients::Tried tried);

} // namespace quenby
