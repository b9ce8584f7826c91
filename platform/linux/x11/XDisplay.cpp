#include "platform/linux/x11/XDisplay.h"

#include <QGuiApplication>

namespace quenby {

std::optional<XDisplay> XDisplay::ofApplication() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection())
        return std::nullopt;
    int number = 0;
    char* host = nullptr;
    int display = 0;
    if (xcb_parse_display(nullptr, &host, &display, &number))
        std::free(host);
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(x11->connection()));
    for (; number > 0 && screens.rem > 1; --number)
        xcb_screen_next(&screens);
    if (!screens.data)
        return std::nullopt;
    return XDisplay{x11->connection(), screens.data};
}

xcb_atom_t XDisplay::atom(const QByteArray& name) const {
    const auto cookie = xcb_intern_atom(connection, true, static_cast<uint16_t>(name.size()), name.constData());
    const CAllocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace quenby
