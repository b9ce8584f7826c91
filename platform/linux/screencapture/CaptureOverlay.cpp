#include "platform/linux/screencapture/CaptureOverlay.h"

#include "platform/linux/screencapture/CaptureCursor.h"
#include "platform/linux/screencapture/CapturePainter.h"
#include "platform/linux/screencapture/DesktopPicture.h"

#include <QGuiApplication>

#include <algorithm>
#include <chrono>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// Between two paintings: mice tell more often than screens show.
constexpr auto paintInterval = 8ms;

QPoint pointerNow(const XDisplay& display) {
    const CAllocated<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
        display.connection, xcb_query_pointer(display.connection, display.screen->root), nullptr));
    return reply ? QPoint(reply->root_x, reply->root_y) : display.desktop().center();
}

// Above everything, and outside of the window manager's care.
xcb_window_t makeWindow(const XDisplay& display) {
    const auto window = xcb_generate_id(display.connection);
    const uint32_t mask = XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK;
    const uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 1, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(display.connection, XCB_COPY_FROM_PARENT, window, display.screen->root, 0, 0,
                      display.screen->width_in_pixels, display.screen->height_in_pixels, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, display.screen->root_visual, mask, values);
    const QByteArray title = "Choose a part of the screen";
    xcb_change_property(display.connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<uint32_t>(title.size()), title.constData());
    return window;
}

xcb_gcontext_t makeContext(const XDisplay& display, xcb_window_t window) {
    const auto context = xcb_generate_id(display.connection);
    xcb_create_gc(display.connection, context, window, 0, nullptr);
    return context;
}

} // namespace

CaptureOverlay::CaptureOverlay(const XDisplay& display, const QImage& picture, const CaptureGround& ground)
    : display_(display)
    , picture_(picture)
    , selection_(ground, pointerNow(display))
    , keys_(display)
    , window_(makeWindow(display))
    , context_(makeContext(display, window_))
    , cursor_(makeCaptureCursor(display, screenAt(ground.screens, selection_.pointer()).scale))
    , grab_(display)
    , realPointer_(selection_.pointer()) {
    painting_.setSingleShot(true);
    connect(&painting_, &QTimer::timeout, this, &CaptureOverlay::paint);
    qApp->installNativeEventFilter(this);
}

CaptureOverlay::~CaptureOverlay() {
    qApp->removeNativeEventFilter(this);
    xcb_free_cursor(display_.connection, cursor_);
    xcb_free_gc(display_.connection, context_);
    xcb_destroy_window(display_.connection, window_);
    xcb_flush(display_.connection);
}

void CaptureOverlay::open() {
    grab_.take(cursor_, [this](bool isTaken) {
        if (isTaken)
            show();
        else
            Q_EMIT refused();
    });
}

void CaptureOverlay::show() {
    isShown_ = true;
    const uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(display_.connection, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_map_window(display_.connection, window_);
    exposed_ = display_.desktop();
    paint();
}

bool CaptureOverlay::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (!isShown_ || hasTold_ || eventType != "xcb_generic_event_t")
        return false;
    constexpr int isSentBit = 0x80;
    const int type = static_cast<const xcb_generic_event_t*>(message)->response_type & ~isSentBit;
    switch (type) {
    case XCB_EXPOSE: {
        const auto& event = *static_cast<const xcb_expose_event_t*>(message);
        if (event.window != window_)
            return false;
        exposed_ += QRect(event.x, event.y, event.width, event.height);
        schedulePainting();
        return true;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& event = *static_cast<const xcb_motion_notify_event_t*>(message);
        followPointer(event.sequence, {event.root_x, event.root_y});
        afterInput();
        return true;
    }
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        handleButton(*static_cast<const xcb_button_press_event_t*>(message), type == XCB_BUTTON_PRESS);
        return true;
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        handleKey(*static_cast<const xcb_key_press_event_t*>(message), type == XCB_KEY_PRESS);
        return true;
    default:
        return false;
    }
}

// An event that was on its way when a key moved the pointer has the position from before, and following that would take
// the key's step back. Numbers of requests go round, so the comparison is over with the first event from afterwards.
void CaptureOverlay::followPointer(uint16_t sequence, const QPoint& position) {
    if (warpSequence_ && static_cast<int16_t>(static_cast<uint16_t>(sequence - *warpSequence_)) < 0)
        return;
    warpSequence_.reset();
    realPointer_ = position;
    selection_.movePointer(position);
}

void CaptureOverlay::handleButton(const xcb_button_press_event_t& event, bool isPress) {
    const auto time = CaptureSelection::Time(event.time);
    followPointer(event.sequence, {event.root_x, event.root_y});
    if (event.detail == XCB_BUTTON_INDEX_1 && isPress)
        selection_.press(selection_.pointer(), time);
    else if (event.detail == XCB_BUTTON_INDEX_1)
        selection_.release(selection_.pointer(), time, KeyTable::modifiers(event.state));
    else if (event.detail == XCB_BUTTON_INDEX_3 && isPress)
        selection_.cancel();
    afterInput();
}

void CaptureOverlay::handleKey(const xcb_key_press_event_t& event, bool isPress) {
    const auto key = keys_.key(event.detail);
    if (!key)
        return;
    // The toolkit leaves out motions of the pointer that others follow, also from before a key.
    followPointer(event.sequence, {event.root_x, event.root_y});
    if (isPress)
        selection_.pressKey(*key, KeyTable::modifiers(event.state));
    else
        selection_.releaseKey(*key);
    afterInput();
}

void CaptureOverlay::afterInput() {
    if (selection_.hasEnded()) {
        hasTold_ = true;
        if (selection_.phase() == CaptureSelection::Phase::taken)
            Q_EMIT chosen(*selection_.rectangle());
        else
            Q_EMIT cancelled();
        return;
    }
    warpPointer();
    schedulePainting();
}

void CaptureOverlay::warpPointer() {
    if (selection_.pointer() == realPointer_)
        return;
    realPointer_ = selection_.pointer();
    const auto cookie =
        xcb_warp_pointer(display_.connection, XCB_WINDOW_NONE, display_.screen->root, 0, 0, 0, 0,
                         static_cast<int16_t>(realPointer_.x()), static_cast<int16_t>(realPointer_.y()));
    warpSequence_ = static_cast<uint16_t>(cookie.sequence);
    xcb_flush(display_.connection);
}

void CaptureOverlay::schedulePainting() {
    if (painting_.isActive())
        return;
    const auto since = std::chrono::milliseconds(sincePainting_.isValid() ? sincePainting_.elapsed() : 1000);
    painting_.start(std::clamp(std::chrono::milliseconds(paintInterval) - since, 0ms, 8ms));
}

void CaptureOverlay::paint() {
    const CaptureScene now = sceneOf(selection_);
    const QRegion dirty = (changedRegion(scene_, now) | std::exchange(exposed_, {})) & display_.desktop();
    scene_ = now;
    for (const QRect& part : dirty)
        putPicture(display_, window_, context_, paintedScene(scene_, picture_, part), part.topLeft());
    xcb_flush(display_.connection);
    sincePainting_.start();
}

} // namespace quenby
