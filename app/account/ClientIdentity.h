// Who the application is towards the service. An installed application's secret is no secret that protects anything
// (RFC 8252, section 8.5), but it is never logged either.
#pragma once

#include <QString>

namespace quenby {

class Defaults;

struct ClientIdentity {
    QString clientID;
    QString clientSecret;

    // The one that comes with the program.
    static ClientIdentity ofTheProgram();
    // $QUENBY_CLIENT_ID with $QUENBY_CLIENT_SECRET, else the settings `clientID` with `clientSecret`, else the
    // program's own. An identifier without its secret stands for a client that has none.
    static ClientIdentity chosen(const Defaults& defaults);
    // Whether the settings don't matter.
    static bool isChosenByEnvironment();

    friend bool operator==(const ClientIdentity&, const ClientIdentity&) = default;
};

} // namespace quenby
