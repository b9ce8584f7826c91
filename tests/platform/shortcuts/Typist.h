// Who types at the virtual desktop's keyboard, switches its layouts, and runs another program that takes keys: all over
// a connection of its own. Keys are places, as the server counts them, whatever they make.
#pragma once

#include "core/CAllocated.h"

#include <QList>

#include <array>
#include <chrono>
#include <thread>

#include <xcb/xcb.h>
#include <xcb/xcbext.h>
// This header calls fields by a word of the language.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace quenby::testing {

namespace place {
inline constexpr quint8 e = 26, t = 28, y = 29, u = 30, i = 31, o = 32, a = 38, z = 52, f12 = 96;
inline constexpr quint8 shift = 50, ctrl = 37, alt = 64, super = 133, capsLock = 66, numLock = 77;
} // namespace place

class Typist {
public:
    Typist()
        : connection_(xcb_connect(nullptr, nullptr))
        , root_(xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root) {}
    ~Typist() { xcb_disconnect(connection_); }
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    void press(quint8 key) { fake(XCB_KEY_PRESS, key); }
    void release(quint8 key) {
        fake(XCB_KEY_RELEASE, key);
        // Nobody presses a key again within the same of the server's milliseconds.
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    // One after the other down, then up again.
    void type(const QList<quint8>& keys) {
        for (const quint8 key : keys)
            press(key);
        for (auto key = keys.crbegin(); key != keys.crend(); ++key)
            release(*key);
    }

    // Numbered from 0.
    void switchLayout(quint8 layout) {
        const bool isLocking = true;
        std::free(xcb_xkb_use_extension_reply(connection_, xcb_xkb_use_extension(connection_, 1, 0), nullptr));
        xcb_xkb_latch_lock_state(connection_, XCB_XKB_ID_USE_CORE_KBD, 0, 0, isLocking, layout, 0, 0, 0);
        finish();
    }

    // Whether nobody else had it.
    bool grab(quint8 key, uint16_t modifiers) {
        const CAllocated<xcb_generic_error_t> error(
            xcb_request_check(connection_, xcb_grab_key_checked(connection_, 0, root_, modifiers, key,
                                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        return !error;
    }
    void ungrabAll() {
        xcb_ungrab_key(connection_, XCB_GRAB_ANY, root_, XCB_MOD_MASK_ANY);
        finish();
    }

private:
    // XTestFakeInput, as the extension's protocol has it; its library would be one more to install.
    void fake(quint8 type, quint8 key) {
        static xcb_extension_t extension{"XTEST", 0};
        static const xcb_protocol_request_t protocol{1, &extension, 2, true};
        struct FakeInput {
            quint32 header = 0; // is filled in
            quint8 type = 0, detail = 0;
            quint16 unused = 0;
            quint32 delay = 0, root = XCB_NONE;
            std::array<quint32, 5> noPosition{};
        } input;
        input.type = type;
        input.detail = key;
        // Sending uses the two entries before the first.
        std::array<iovec, 3> parts{};
        parts[2] = {&input, sizeof(input)};
        xcb_send_request(connection_, 0, &parts[2], &protocol);
        finish();
    }
    void finish() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

    xcb_connection_t* connection_;
    xcb_window_t root_;
};

} // namespace quenby::testing
