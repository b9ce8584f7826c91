#include "recording/overlay/X11InputFocus.h"

#include "core/CAllocated.h"
#include "widgets/X11Connection.h"

#include <QGuiApplication>
#include <QWindow>

namespace quenby {
namespace {

xcb_window_t focusedWindow(xcb_connection_t* connection) {
    const CAllocated<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply ? reply->focus : xcb_window_t(XCB_NONE);
}

} // namespace

X11InputFocus::~X11InputFocus() { giveBack(); }

void X11InputFocus::take(QWindow& window) {
    if (xcb_connection_t* const connection = x11Connection()) {
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
    xcb_connection_t* const connection = window != 0 ? x11Connection() : nullptr;
    if (!connection || previous == XCB_NONE || focusedWindow(connection) != window)
        return;
    // Who had it may be gone, which is no error of anybody's.
    const auto cookie =
        xcb_set_input_focus_checked(connection, XCB_INPUT_FOCUS_POINTER_ROOT, previous, XCB_CURRENT_TIME);
    const CAllocated<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
}

} // namespace quenby
