#include "bench/popover/Screen.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

#include <cstdlib>
#include <memory>

#include <sys/uio.h>
#include <xcb/xcbext.h>

namespace quenby::bench {
namespace {

constexpr uint8_t middleButton = 2;

xcb_connection_t* connectionToServer() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        qFatal("this needs an X11 display");
    return x11->connection();
}

// XTestFakeInput, as the extension's protocol has it; its library would be one more to install.
struct FakeInput {
    uint8_t majorCode = 0; // the library fills it in, and the length
    uint8_t minorCode = 2;
    uint16_t length = 0;
    uint8_t type = 0;
    uint8_t detail = 0;
    uint16_t unused1 = 0;
    uint32_t delay = 0; // milliseconds
    uint32_t root = XCB_NONE;
    uint32_t unused2[2] = {};
    int16_t x = 0;
    int16_t y = 0;
    uint8_t unused3[7] = {};
    uint8_t device = 0;
};
static_assert(sizeof(FakeInput) == 36);

} // namespace

Screen::Screen()
    : connection_(connectionToServer()) {}

QPoint Screen::trayItem() { return QGuiApplication::primaryScreen()->geometry().bottomRight() - QPoint(15, 15); }

void Screen::movePointer(const QPoint& position) {
    fake(XCB_MOTION_NOTIFY, 0, position);
    finish();
}

void Screen::clickMiddleButton() {
    fake(XCB_BUTTON_PRESS, middleButton, {});
    fake(XCB_BUTTON_RELEASE, middleButton, {});
    xcb_flush(connection_);
}

void Screen::finish() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

QImage Screen::picture(const QRect& part) {
    return QGuiApplication::primaryScreen()->grabWindow(0, part.x(), part.y(), part.width(), part.height()).toImage();
}

QImage Screen::picture(const QWidget& window) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const auto asked =
        xcb_translate_coordinates(connection_, static_cast<xcb_window_t>(window.effectiveWinId()), root, 0, 0);
    const std::unique_ptr<xcb_translate_coordinates_reply_t, decltype(&std::free)> place(
        xcb_translate_coordinates_reply(connection_, asked, nullptr), &std::free);
    return place ? picture(QRect(QPoint(place->dst_x, place->dst_y), window.size())) : QImage();
}

void Screen::fake(uint8_t type, uint8_t detail, const QPoint& position) {
    static xcb_extension_t extension{"XTEST", 0};
    static const xcb_protocol_request_t protocol{1, &extension, 2, true};
    FakeInput request;
    request.type = type;
    request.detail = detail;
    request.x = static_cast<int16_t>(position.x());
    request.y = static_cast<int16_t>(position.y());
    // The library wants two places of its own in front.
    iovec parts[3] = {{}, {}, {&request, sizeof request}};
    xcb_send_request(connection_, 0, parts + 2, &protocol);
}

} // namespace quenby::bench
