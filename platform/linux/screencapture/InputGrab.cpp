#include "platform/linux/screencapture/InputGrab.h"

#include <chrono>
#include <utility>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// A program that is being left, or a key that is still held, lets go within this time. The display does not tell when.
constexpr auto retryInterval = 50ms;
constexpr int mostTries = 20;

constexpr auto pointerEvents =
    static_cast<uint16_t>(XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION);

} // namespace

InputGrab::InputGrab(const XDisplay& display)
    : display_(display) {
    next_.setSingleShot(true);
    QObject::connect(&next_, &QTimer::timeout, &next_, [this] { attempt(); });
}

InputGrab::~InputGrab() {
    xcb_ungrab_keyboard(display_.connection, XCB_CURRENT_TIME);
    xcb_ungrab_pointer(display_.connection, XCB_CURRENT_TIME);
    xcb_flush(display_.connection);
}

void InputGrab::take(xcb_cursor_t cursor, std::function<void(bool)> done) {
    cursor_ = cursor;
    done_ = std::move(done);
    next_.start(0ms);
}

void InputGrab::attempt() {
    const bool isTaken = tryBoth();
    if (isTaken || ++tries_ == mostTries)
        std::exchange(done_, nullptr)(isTaken);
    else
        next_.start(retryInterval);
}

bool InputGrab::tryBoth() {
    const auto root = display_.screen->root;
    const CAllocated<xcb_grab_pointer_reply_t> pointer(
        xcb_grab_pointer_reply(display_.connection,
                               xcb_grab_pointer(display_.connection, false, root, pointerEvents, XCB_GRAB_MODE_ASYNC,
                                                XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, cursor_, XCB_CURRENT_TIME),
                               nullptr));
    if (!pointer || pointer->status != XCB_GRAB_STATUS_SUCCESS)
        return false;
    const CAllocated<xcb_grab_keyboard_reply_t> keyboard(xcb_grab_keyboard_reply(
        display_.connection,
        xcb_grab_keyboard(display_.connection, false, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
        nullptr));
    if (keyboard && keyboard->status == XCB_GRAB_STATUS_SUCCESS)
        return true;
    xcb_ungrab_pointer(display_.connection, XCB_CURRENT_TIME);
    return false;
}

} // namespace quenby
