#include "platform/linux/screencapture/KeyTable.h"

namespace quenby {
namespace {

// The names of keys in the X protocol, of the number pad too.
std::optional<CaptureKey> meaning(xcb_keysym_t symbol) {
    switch (symbol) {
    case 0xff51: // Left
    case 0xff96: // KP_Left
        return CaptureKey::left;
    case 0xff52: // Up
    case 0xff97: // KP_Up
        return CaptureKey::up;
    case 0xff53: // Right
    case 0xff98: // KP_Right
        return CaptureKey::right;
    case 0xff54: // Down
    case 0xff99: // KP_Down
        return CaptureKey::down;
    case 0xff0d: // Return
    case 0xff8d: // KP_Enter
        return CaptureKey::take;
    case 0x0020: // space
        return CaptureKey::space;
    case 0xff1b: // Escape
        return CaptureKey::cancel;
    default:
        return std::nullopt;
    }
}

} // namespace

KeyTable::KeyTable(const XDisplay& display) {
    const xcb_setup_t* const setup = xcb_get_setup(display.connection);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const CAllocated<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        display.connection, xcb_get_keyboard_mapping(display.connection, setup->min_keycode, count), nullptr));
    if (!reply)
        return;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    const int perKey = reply->keysyms_per_keycode;
    for (int i = 0; perKey > 0 && i < xcb_get_keyboard_mapping_keysyms_length(reply.get()); i += perKey)
        if (const auto key = meaning(symbols[i]))
            keys_.insert(static_cast<xcb_keycode_t>(setup->min_keycode + i / perKey), *key);
}

std::optional<CaptureKey> KeyTable::key(xcb_keycode_t code) const {
    const auto found = keys_.constFind(code);
    return found == keys_.cend() ? std::nullopt : std::optional(*found);
}

CaptureModifiers KeyTable::modifiers(uint16_t state) {
    return {(state & XCB_MOD_MASK_SHIFT) != 0, (state & XCB_MOD_MASK_CONTROL) != 0, (state & XCB_MOD_MASK_1) != 0};
}

} // namespace quenby
