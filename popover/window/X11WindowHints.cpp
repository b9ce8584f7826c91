#include "popover/window/X11WindowHints.h"

#include "core/CAllocated.h"
#include "widgets/X11Connection.h"

#include <QGuiApplication>
#include <QWindow>

#include <array>
#include <cmath>
#include <cstdlib>

namespace quenby {
namespace {

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name) {
    const auto cookie = xcb_intern_atom(connection, false, static_cast<uint16_t>(name.size()), name.constData());
    const CAllocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

int screenNumber() {
    int screen = 0;
    int display = 0;
    char* host = nullptr;
    if (xcb_parse_display(nullptr, &host, &display, &screen))
        std::free(host);
    return screen;
}

template <typename Values>
void setProperty(xcb_connection_t* connection, const QWindow& window, const char* property, xcb_atom_t type,
                 const Values& values) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom(connection, property), type, 32, static_cast<uint32_t>(values.size()), values.data());
}

} // namespace

bool isScreenComposited() {
    xcb_connection_t* const connection = x11Connection();
    if (!connection)
        return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    const xcb_atom_t selection = atom(connection, "_NET_WM_CM_S" + QByteArray::number(screenNumber()));
    const auto cookie = xcb_get_selection_owner(connection, selection);
    const CAllocated<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(connection, cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void keepOffTaskBars(const QWindow& window) {
    xcb_connection_t* const connection = x11Connection();
    if (!connection)
        return;
    // The toolkit adds its own states to these when it shows the window.
    const std::array states{atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                            atom(connection, "_NET_WM_STATE_SKIP_PAGER")};
    setProperty(connection, window, "_NET_WM_STATE", XCB_ATOM_ATOM, states);
}

void tellShadow(const QWindow& window, const QMargins& shadow) {
    xcb_connection_t* const connection = x11Connection();
    if (!connection)
        return;
    const auto pixels = [ratio = window.devicePixelRatio()](int length) {
        return static_cast<uint32_t>(std::lround(length * ratio));
    };
    const std::array extents{pixels(shadow.left()), pixels(shadow.right()), pixels(shadow.top()),
                             pixels(shadow.bottom())};
    setProperty(connection, window, "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL, extents);
}

} // namespace quenby
