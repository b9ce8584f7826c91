// How much of the Drive the next sign-in asks for: as the settings have it, whoever writes them.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/DriveAccess.h"

#include <QObject>

namespace quenby {

class Defaults;
class DriveConnection;

class AccessChoice final : public QObject {
    Q_OBJECT

public:
    AccessChoice(DriveConnection& drive, Defaults& defaults);

    // A Drive without a console gives everything to everybody, and there is nothing to choose.
    bool isOffered() const;
    DriveAccess access() const;
    // Stores it. Who is signed in keeps what the sign-in was given.
    void choose(DriveAccess access);

Q_SIGNALS:
    // The connection makes its authorizers for it from here on.
    void accessChanged(quenby::DriveAccess access);

private:
    void follow();

    DriveConnection& drive_;
    Defaults& defaults_;
};

} // namespace quenby
