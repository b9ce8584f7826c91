// Who uses the Drive.
#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>

namespace quenby::localdrive {

struct Account {
    QString displayName;
    QString emailAddress; // also the name of the account: compared without regard to case

    // Drive's number for this person in permissions, a function of the address alone.
    QString permissionId() const;

    // The account of a Drive that was not told another one.
    static Account standard();
};

// The program through which somebody calls.
struct CallingProgram {
    QString clientId; // empty: the Drive's own pages
    // Whether the person let it see the files that it made, and no others.
    bool seesOwnFilesOnly = false;
};

// On whose behalf, under which address and when a call is made. The answer's links all begin with `base`.
struct Caller {
    Account user;
    QUrl base;     // for example http://127.0.0.1:4711, without a slash at the end
    QDateTime now; // what the call's dates are set to
    CallingProgram program = {};
};

} // namespace quenby::localdrive
