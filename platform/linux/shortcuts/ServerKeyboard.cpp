#include "platform/linux/shortcuts/ServerKeyboard.h"

#include "core/CAllocated.h"

#include <iterator>
#include <memory>
#include <utility>

#include <xkbcommon/xkbcommon-x11.h>

// This header calls fields by a word of the language.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace quenby {
namespace {

constexpr uint16_t keyboardEvents =
    XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
constexpr uint16_t mapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP |
                              XCB_XKB_MAP_PART_EXPLICIT_COMPONENTS | XCB_XKB_MAP_PART_KEY_ACTIONS |
                              XCB_XKB_MAP_PART_KEY_BEHAVIORS | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                              XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;

// What all events of the extension begin with.
struct KeyboardEvent {
    uint8_t response;
    uint8_t kind;
};

} // namespace

// The toolkit follows the keyboard by the same events. What it selected must stay, so nothing is ever deselected.
ServerKeyboard::ServerKeyboard(xcb_connection_t* connection)
    : connection_(connection) {
    const bool isSupported =
        xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent_, nullptr) != 0;
    if (!isSupported) {
        firstEvent_ = 0;
        return;
    }
    xcb_xkb_select_events(connection, XCB_XKB_ID_USE_CORE_KBD, keyboardEvents, 0, keyboardEvents, mapParts, mapParts,
                          nullptr);
    readLayout();
}

std::optional<KeyboardMap> ServerKeyboard::readMap() const {
    const int32_t device = xkb_x11_get_core_keyboard_device_id(connection_);
    if (device < 0)
        return std::nullopt;
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
        xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES), xkb_context_unref);
    if (!context)
        return std::nullopt;
    const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> map(
        xkb_x11_keymap_new_from_device(context.get(), connection_, device, XKB_KEYMAP_COMPILE_NO_FLAGS),
        xkb_keymap_unref);
    return map ? std::optional<KeyboardMap>(std::in_place, map.get()) : std::nullopt;
}

void ServerKeyboard::readLayout() {
    const CAllocated<xcb_xkb_get_state_reply_t> state(
        xcb_xkb_get_state_reply(connection_, xcb_xkb_get_state(connection_, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    if (state)
        layout_ = state->lockedGroup;
}

QList<quint8> ServerKeyboard::keysDown() const {
    const CAllocated<xcb_query_keymap_reply_t> reply(
        xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
    QList<quint8> down;
    for (unsigned code = 0; reply && code < 8 * std::size(reply->keys); ++code)
        if ((reply->keys[code / 8] >> code % 8 & 1) != 0)
            down.append(static_cast<quint8>(code));
    return down;
}

ServerKeyboard::Change ServerKeyboard::changeBy(const xcb_generic_event_t& event) {
    const auto& told = reinterpret_cast<const KeyboardEvent&>(event);
    if (!isThere() || told.response != firstEvent_)
        return Change::none;
    switch (told.kind) {
    case XCB_XKB_NEW_KEYBOARD_NOTIFY:
    case XCB_XKB_MAP_NOTIFY:
        return Change::map;
    case XCB_XKB_STATE_NOTIFY: {
        const quint32 now = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event).lockedGroup;
        return std::exchange(layout_, now) == now ? Change::none : Change::layout;
    }
    default:
        return Change::none;
    }
}

} // namespace quenby
