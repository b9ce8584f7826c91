#include "platform/linux/shortcuts/KeyGrabs.h"

#include "core/CAllocated.h"

#include <vector>

namespace quenby {
namespace {

// On each screen of the server, which all have the same keyboard.
template <typename Use>
void forEachRoot(xcb_connection_t* connection, const Use& use) {
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection)); screen.rem > 0; xcb_screen_next(&screen))
        use(screen.data->root);
}

} // namespace

KeyGrabs::Outcome KeyGrabs::take(const std::set<KeyChord>& wanted) {
    keepOnly(wanted);
    // All are asked for before one is waited for.
    std::vector<xcb_void_cookie_t> asked;
    for (const KeyChord& chord : wanted) {
        if (held_.contains(chord))
            continue;
        forEachRoot(connection_, [&](xcb_window_t root) {
            // The events are to come here also when one of our own windows has the keyboard; nothing is frozen.
            const uint8_t ownerEvents = 0;
            asked.push_back(xcb_grab_key_checked(connection_, ownerEvents, root, chord.modifiers, chord.code,
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        });
    }
    held_ = wanted;
    Outcome outcome = Outcome::taken;
    for (const xcb_void_cookie_t request : asked) {
        const CAllocated<xcb_generic_error_t> error(xcb_request_check(connection_, request));
        if (error && outcome != Outcome::heldByOther)
            outcome = error->error_code == XCB_ACCESS ? Outcome::heldByOther : Outcome::failed;
    }
    if (xcb_connection_has_error(connection_) != 0)
        outcome = Outcome::failed;
    if (outcome != Outcome::taken)
        release();
    return outcome;
}

void KeyGrabs::keepOnly(const std::set<KeyChord>& wanted) {
    const auto given = std::erase_if(held_, [&](const KeyChord& chord) {
        const bool isOver = !wanted.contains(chord);
        if (isOver)
            give(chord);
        return isOver;
    });
    if (given != 0)
        xcb_flush(connection_);
}

// What is not ours stays as it is.
void KeyGrabs::give(const KeyChord& chord) const {
    forEachRoot(connection_,
                [&](xcb_window_t root) { xcb_ungrab_key(connection_, chord.code, root, chord.modifiers); });
}

} // namespace quenby
