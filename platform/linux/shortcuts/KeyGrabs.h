// The keys that one shortcut holds on the X server: all that it wants, or none.
//
// Threads: the main thread. Taking waits for the server, and for nobody else.
#pragma once

#include "platform/linux/shortcuts/KeyboardMap.h"

#include <set>

#include <xcb/xcb.h>

namespace quenby {

class KeyGrabs {
public:
    explicit KeyGrabs(xcb_connection_t* connection)
        : connection_(connection) {}
    // Leaves nothing grabbed. The connection has to be there still, unless abandon() was called.
    ~KeyGrabs() { release(); }
    KeyGrabs(const KeyGrabs&) = delete;
    KeyGrabs& operator=(const KeyGrabs&) = delete;

    enum class Outcome { taken, heldByOther, failed };
    // What is held already and wanted still is left alone; what is not wanted is given back.
    Outcome take(const std::set<KeyChord>& wanted);
    // Takes nothing new.
    void keepOnly(const std::set<KeyChord>& wanted);
    void release() { keepOnly({}); }
    // The connection has gone, and the grabs with it.
    void abandon() { held_.clear(); }

    bool holds(const KeyChord& chord) const { return held_.contains(chord); }

private:
    void give(const KeyChord& chord) const;

    xcb_connection_t* connection_;
    std::set<KeyChord> held_;
};

} // namespace quenby
