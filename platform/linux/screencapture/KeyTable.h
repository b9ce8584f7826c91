// Which keys of an X display's keyboard mean something here. Threads: the main thread.
#pragma once

#include "platform/linux/screencapture/CaptureSelection.h"
#include "platform/linux/x11/XDisplay.h"

#include <QHash>

namespace quenby {

class KeyTable {
public:
    // One round trip.
    explicit KeyTable(const XDisplay& display);

    std::optional<CaptureKey> key(xcb_keycode_t code) const;
    static CaptureModifiers modifiers(uint16_t state);

private:
    QHash<xcb_keycode_t, CaptureKey> keys_;
};

} // namespace quenby
