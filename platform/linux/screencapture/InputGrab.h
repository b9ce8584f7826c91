// The pointer and the keyboard of an X display, for one window alone. Threads: the main thread.
#pragma once

#include "platform/linux/x11/XDisplay.h"

#include <QTimer>

#include <functional>

namespace quenby {

// Both are released when the object is destroyed.
class InputGrab {
public:
    explicit InputGrab(const XDisplay& display);
    ~InputGrab();
    InputGrab(const InputGrab&) = delete;
    InputGrab& operator=(const InputGrab&) = delete;

    // Once. Tries again for a while when another program holds one of them, as an open menu does. Events then come with
    // the root window as theirs.
    void take(xcb_cursor_t cursor, std::function<void(bool isTaken)> done);

private:
    void attempt();
    bool tryBoth();

    XDisplay display_;
    xcb_cursor_t cursor_ = XCB_CURSOR_NONE;
    std::function<void(bool)> done_;
    QTimer next_;
    int tries_ = 0;
};

} // namespace quenby
