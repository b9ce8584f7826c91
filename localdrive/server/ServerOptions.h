// What quenby-localdrive is started with.
#pragma once

#include "core/Result.h"

#include <QHash>
#include <QStringList>

#include <chrono>
#include <optional>

namespace quenby::localdrive {

struct TlsFiles {
    QString certificate; // PEM, the chain
    QString key;         // PEM
};

struct ServerOptions {
    QString dataFolder;
    std::optional<quint16> port; // nothing: the port of the last run, else any; 0: any
    std::optional<qint64> quotaBytes;
    std::chrono::seconds tokenLifetime{3600};
    std::optional<std::chrono::seconds> idleExit; // end after so long without a request
    std::optional<TlsFiles> tls;
    QHash<QString, QString> clients; // pinned client id -> its secret; other ids are taken with any secret
    bool onlyClients = false;        // other ids are refused
    QString controlToken;            // empty: no control endpoint
    bool withoutRpc = false;         // the JSON-RPC road is closed
    bool withoutChangeIds = false;   // changes have no numeric ids
    bool quiet = false;              // no line a request, nor an event of the activity
    int activityRate = 0;            // events a minute of invented people; 0: there are none
    quint32 activitySeed = 1;        // of their story

    bool hasControl() const { return !controlToken.isEmpty(); }

    // The command line with the program's name in front. The error's reason is what to print; a call for help comes
    // back as an error with code 0.
    static Result<ServerOptions> parse(const QStringList& arguments);
};

} // namespace quenby::localdrive
