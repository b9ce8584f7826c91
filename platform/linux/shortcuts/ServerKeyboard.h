// The X server's keyboard: its map, the layout in use, and which events tell that they changed.
//
// Threads: the main thread. Reading waits for the server, and for nobody else.
#pragma once

#include "platform/linux/shortcuts/KeyboardMap.h"

#include <optional>

#include <xcb/xcb.h>

namespace quenby {

class ServerKeyboard {
public:
    // Has the events sent to the connection, whose owner hands them over to changeBy().
    explicit ServerKeyboard(xcb_connection_t* connection);

    // False on a server without the keyboard extension.
    bool isThere() const { return firstEvent_ != 0; }

    // Nothing when the server does not tell it.
    std::optional<KeyboardMap> readMap() const;
    // The layout that stays when all keys are up.
    quint32 layout() const { return layout_; }
    void readLayout();

    // The codes of the keys that are down now.
    QList<quint8> keysDown() const;

    enum class Change { none, layout, map };
    Change changeBy(const xcb_generic_event_t& event);

private:
    xcb_connection_t* connection_;
    quint8 firstEvent_ = 0;
    quint32 layout_ = 0;
};

} // namespace quenby
