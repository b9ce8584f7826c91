#include "platform/linux/screencapture/CaptureCursor.h"

#include <QtGlobal>

namespace quenby {
namespace {

// In points, from the middle.
constexpr qreal armBegin = 3;
constexpr qreal armEnd = 11;

// A picture of one bit a pixel with the four arms, each so much wider to every side.
xcb_pixmap_t makeCross(const XDisplay& display, int middle, qreal scale, int wider) {
    const auto side = static_cast<uint16_t>(2 * middle + 1);
    const auto bitmap = xcb_generate_id(display.connection);
    xcb_create_pixmap(display.connection, 1, bitmap, display.screen->root, side, side);
    const auto context = xcb_generate_id(display.connection);
    uint32_t color = 0;
    xcb_create_gc(display.connection, context, bitmap, XCB_GC_FOREGROUND, &color);
    const xcb_rectangle_t all{0, 0, side, side};
    xcb_poly_fill_rectangle(display.connection, bitmap, context, 1, &all);

    const int half = qRound((scale - 1) / 2) + wider;
    const auto width = static_cast<uint16_t>(2 * half + 1);
    const int begin = qRound(armBegin * scale) - wider;
    const int end = qRound(armEnd * scale) + wider;
    const auto length = static_cast<uint16_t>(end - begin + 1);
    const auto near = static_cast<int16_t>(middle - half);
    const auto before = static_cast<int16_t>(middle - end);
    const auto behind = static_cast<int16_t>(middle + begin);
    const xcb_rectangle_t arms[] = {{before, near, length, width},
                                    {behind, near, length, width},
                                    {near, before, width, length},
                                    {near, behind, width, length}};
    color = 1;
    xcb_change_gc(display.connection, context, XCB_GC_FOREGROUND, &color);
    xcb_poly_fill_rectangle(display.connection, bitmap, context, 4, arms);
    xcb_free_gc(display.connection, context);
    return bitmap;
}

} // namespace

xcb_cursor_t makeCaptureCursor(const XDisplay& display, qreal scale) {
    const int middle = qRound(armEnd * scale) + 1;
    const xcb_pixmap_t shape = makeCross(display, middle, scale, 0);
    const xcb_pixmap_t mask = makeCross(display, middle, scale, 1);
    const auto cursor = xcb_generate_id(display.connection);
    const auto hot = static_cast<uint16_t>(middle);
    // Black with a white edge is seen on any ground.
    constexpr uint16_t white = 0xffff;
    xcb_create_cursor(display.connection, cursor, shape, mask, 0, 0, 0, white, white, white, hot, hot);
    xcb_free_pixmap(display.connection, shape);
    xcb_free_pixmap(display.connection, mask);
    return cursor;
}

} // namespace quenby
