#include "popover/window/X11ButtonWatch.h"

#include "widgets/X11Connection.h"

#include <QGuiApplication>

#include <array>

#include <xcb/xcb.h>
#include <xcb/xcbext.h>

namespace quenby {
namespace {

// The little that is needed of the second version of the X input extension, which the toolkit has already negotiated
// for its connection. Its library would be one more to install.
xcb_extension_t inputExtension{"XInputExtension", 0};
constexpr std::uint8_t selectEvents = 46;
constexpr std::uint16_t allMasterDevices = 1; // the toolkit itself listens to others on the root window
constexpr std::uint16_t buttonPress = 4;      // at a window
constexpr std::uint16_t rawButtonPress = 15;
constexpr std::uint16_t rawButtonRelease = 16;
constexpr std::uint32_t rawButtons = 1U << rawButtonPress | 1U << rawButtonRelease;

struct SelectEvents {
    std::array<std::uint8_t, 4> header{}; // is filled in with the extension's number and the length
    std::uint32_t window;
    std::uint16_t masks = 1;
    std::uint16_t padding = 0;
    std::uint16_t device = allMasterDevices;
    std::uint16_t maskLength = 1;
    std::uint32_t mask;
};
static_assert(sizeof(SelectEvents) == 20);

// What raw events and those at a window begin with.
struct ButtonEvent {
    std::uint8_t response;
    std::uint8_t extension;
    std::uint16_t sequence;
    std::uint32_t length;
    std::uint16_t type;
    std::uint16_t device;
    std::uint32_t time;
    std::uint32_t button;
};
static_assert(sizeof(ButtonEvent) == 20);

// Each screen of the display has a root; the toolkit shows windows on one of them.
void select(xcb_connection_t* connection, std::uint32_t mask) {
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection)); screen.rem > 0; xcb_screen_next(&screen)) {
        SelectEvents request{.window = screen.data->root, .mask = mask};
        const xcb_protocol_request_t protocol{1, &inputExtension, selectEvents, 1};
        // Sending uses the two entries before the first.
        std::array<iovec, 3> parts{};
        parts[2] = {&request, sizeof(request)};
        xcb_send_request(connection, 0, &parts[2], &protocol);
    }
    xcb_flush(connection);
}

} // namespace

void X11ButtonWatch::start() {
    xcb_connection_t* const connection = x11Connection();
    const auto* extension = connection ? xcb_get_extension_data(connection, &inputExtension) : nullptr;
    if (extension_ != 0 || !extension || !extension->present)
        return;
    extension_ = extension->major_opcode;
    select(connection, rawButtons);
    qApp->installNativeEventFilter(this);
}

void X11ButtonWatch::stop() {
    if (extension_ == 0)
        return;
    extension_ = 0;
    if (!qApp)
        return;
    qApp->removeNativeEventFilter(this);
    if (xcb_connection_t* const connection = x11Connection())
        select(connection, 0);
}

bool X11ButtonWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const ButtonEvent*>(message);
    if ((event.response & 0x7f) != XCB_GE_GENERIC || event.extension != extension_)
        return false;
    const bool isRaw = event.type == rawButtonPress || event.type == rawButtonRelease;
    if (event.button == XCB_BUTTON_INDEX_1 || event.button == XCB_BUTTON_INDEX_3) {
        if (event.type == rawButtonPress)
            Q_EMIT pressed();
        else if (event.type == rawButtonRelease)
            Q_EMIT released();
        else if (event.type == buttonPress)
            Q_EMIT arrived();
    }
    return isRaw;
}

} // namespace quenby
