// Lets the status item stand where the setting "statusItemPlace" says, and move when the setting changes.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "platform/StatusItemHost.h"

#include <QObject>

#include <optional>

namespace quenby {

class Defaults;

// Absent for every value that names no place.
std::optional<StatusItemPlace> statusItemPlaceSetting(const Defaults& defaults);

class StatusItemPlaceSetting : public QObject {
    Q_OBJECT

public:
    // Chooses at once; made before the hosts start, it saves the item a move. When the command line has decided, the
    // setting counts for nothing as long as the program runs.
    enum class DecidedBy { setting, commandLine };
    StatusItemPlaceSetting(StatusItemHosts& hosts, const Defaults& defaults, DecidedBy decidedBy,
                           QObject* parent = nullptr);
};

} // namespace quenby
