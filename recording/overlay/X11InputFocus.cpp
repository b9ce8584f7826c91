#include "recording/overlay/X11InputFocus.h"

#include <QGuiApplication>
#include <QWindow>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace quenby {
namespace {

struct Freed {
    void operator()(void* reply) const { std::free(reply); }
};

// Null on any other system.
xcb_connection_t* connectionToServer() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_window_t focusedWindow(xcb_connection_t* connection) {
    const std::unique_ptr<xcb_get_input_focus_reply_t, Freed> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply ? reply->focus : xcb_window_t(XCB_NONE);
}

} // namespace

X11InputFocus::~X11InputFocus() { giveBack(); }

void X11InputFocus::take(QWindow& window) {
    if (xcb_connection_t* const connection = connectionToServer()) {
        const auto id = static_cast<quint32>(window.winId());
        const xcb_window_t focused = focusedWindow(connection);
        if (focused != id)
            previous_ = focused;
        window_ = id;
    }
    // For a window without a manager the toolkit sets the focus itself, as soon as the window is on the screen.
    window.requestActivate();
}

void X11InputFocus::giveBack() {
    const xcb_window_t window = std::exchange(window_, 0);
    const xcb_window_t previous = std::exchange(previous_, 0);
    xcb_connection_t* const connection = window != 0 ? connectionToServer() : nullptr;
    if (!connection || previous == XCB_NONE || focusedWindow(connection) != window)
        return;
    // Who had it may be gone, which is no error of anybody's.
    const auto cookie =
        xcb_set_input_focus_checked(connection, XCB_INPUT_FOCUS_POINTER_ROOT, previous, XCB_CURRENT_TIME);
    const std::unique_ptr<xcb_generic_error_t, Freed> error(xcb_request_check(connection, cookie));
}

} // namespace quenby
