#include "platform/linux/desktop/EmbedTrayWatch.h"

#include "core/CAllocated.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>

namespace quenby {
namespace {

int screenNumber() {
    int screen = 0;
    int display = 0;
    char* host = nullptr;
    if (xcb_parse_display(nullptr, &host, &display, &screen))
        std::free(host);
    return screen;
}

} // namespace

EmbedTrayWatch::EmbedTrayWatch() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) { // as on a screen that is none
        setState(State::absent);
        return;
    }
    connection_ = x11->connection();
    manager_ = atom("MANAGER");
    selection_ = atom("_NET_SYSTEM_TRAY_S" + QByteArray::number(screenNumber()));
    // The toolkit has selected the root window's events already.
    qApp->installNativeEventFilter(this);
    findOwner();
}

EmbedTrayWatch::~EmbedTrayWatch() {
    if (qApp)
        qApp->removeNativeEventFilter(this);
}

bool EmbedTrayWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const int isSentBit = 0x80;
    switch (event->response_type & ~isSentBit) {
    case XCB_CLIENT_MESSAGE: {
        const auto* told = static_cast<const xcb_client_message_event_t*>(message);
        if (told->type == manager_ && told->format == 32 && told->data.data32[1] == selection_)
            findOwner();
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (static_cast<const xcb_destroy_notify_event_t*>(message)->window == owner_)
            findOwner();
        break;
    default:
        break;
    }
    return false;
}

xcb_atom_t EmbedTrayWatch::atom(const QByteArray& name) const {
    const auto cookie = xcb_intern_atom(connection_, false, static_cast<uint16_t>(name.size()), name.constData());
    const CAllocated<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void EmbedTrayWatch::findOwner() {
    const auto cookie = xcb_get_selection_owner(connection_, selection_);
    const CAllocated<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    owner_ = reply && watchWindow(reply->owner) ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
    setState(owner_ ? State::there : State::absent);
}

bool EmbedTrayWatch::watchWindow(xcb_window_t window) const {
    if (window == XCB_WINDOW_NONE)
        return false;
    const auto cookie = xcb_get_window_attributes(connection_, window);
    const CAllocated<xcb_get_window_attributes_reply_t> now(
        xcb_get_window_attributes_reply(connection_, cookie, nullptr));
    if (!now)
        return false;
    // The toolkit's own tray icons watch this window over the same connection: what they selected stays.
    const uint32_t mask = now->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const auto change = xcb_change_window_attributes_checked(connection_, window, XCB_CW_EVENT_MASK, &mask);
    const CAllocated<xcb_generic_error_t> error(xcb_request_check(connection_, change));
    return !error;
}

} // namespace quenby
