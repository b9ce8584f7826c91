#include "platform/linux/screencapture/DesktopPicture.h"

#include <algorithm>
#include <cstring>

namespace quenby {
namespace {

const xcb_visualtype_t* rootVisual(const XDisplay& display) {
    for (auto depths = xcb_screen_allowed_depths_iterator(display.screen); depths.rem; xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem; xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == display.screen->root_visual)
                return visuals.data;
    return nullptr;
}

const xcb_format_t* pixmapFormat(const XDisplay& display) {
    for (auto formats = xcb_setup_pixmap_formats_iterator(xcb_get_setup(display.connection)); formats.rem;
         xcb_format_next(&formats))
        if (formats.data->depth == display.screen->root_depth)
            return formats.data;
    return nullptr;
}

bool hasOurByteOrder(const XDisplay& display) {
    const auto order = xcb_get_setup(display.connection)->image_byte_order;
    return (order == XCB_IMAGE_ORDER_LSB_FIRST) == (Q_BYTE_ORDER == Q_LITTLE_ENDIAN);
}

// The display leaves anything in the unused bits of a pixel; the toolkit takes them to be set.
void makeOpaque(QImage& picture) {
    for (int y = 0; y < picture.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        std::for_each(line, line + picture.width(), [](QRgb& pixel) { pixel |= 0xff000000; });
    }
}

} // namespace

std::optional<QImage::Format> pixelFormat(const XDisplay& display) {
    const xcb_visualtype_t* const visual = rootVisual(display);
    const xcb_format_t* const format = pixmapFormat(display);
    // Lines of a picture in the toolkit's memory are whole numbers of 32 bits, too.
    if (!visual || !format || format->scanline_pad != 32 || !hasOurByteOrder(display))
        return std::nullopt;
    const auto is = [&](int bits, quint32 red) { return format->bits_per_pixel == bits && visual->red_mask == red; };
    if (is(32, 0xff0000))
        return QImage::Format_RGB32;
    if (is(32, 0x3ff00000))
        return QImage::Format_RGB30;
    if (is(32, 0x3ff))
        return QImage::Format_BGR30;
    if (is(16, 0xf800))
        return QImage::Format_RGB16;
    if (is(16, 0x7c00))
        return QImage::Format_RGB555;
    return std::nullopt;
}

QImage takeDesktopPicture(const XDisplay& display) {
    const auto format = pixelFormat(display);
    if (!format)
        return {};
    const QSize size = display.desktop().size();
    const auto cookie =
        xcb_get_image(display.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, display.screen->root, 0, 0,
                      static_cast<uint16_t>(size.width()), static_cast<uint16_t>(size.height()), ~uint32_t{0});
    const CAllocated<xcb_get_image_reply_t> reply(xcb_get_image_reply(display.connection, cookie, nullptr));
    QImage picture(size, *format);
    if (!reply || picture.isNull() || xcb_get_image_data_length(reply.get()) < picture.sizeInBytes())
        return {};
    std::memcpy(picture.bits(), xcb_get_image_data(reply.get()), static_cast<size_t>(picture.sizeInBytes()));
    picture = std::move(picture).convertToFormat(QImage::Format_RGB32);
    makeOpaque(picture);
    return picture;
}

void putPicture(const XDisplay& display, xcb_drawable_t window, xcb_gcontext_t context, const QImage& picture,
                const QPoint& position) {
    const auto format = pixelFormat(display);
    if (!format || picture.isNull())
        return;
    const QImage pixels = picture.convertToFormat(*format);
    // A request has a largest length: a large picture goes in bands.
    const qint64 largest = qint64{xcb_get_maximum_request_length(display.connection)} * 4 - 64;
    const int rows = static_cast<int>(std::clamp<qint64>(largest / pixels.bytesPerLine(), 1, pixels.height()));
    for (int y = 0; y < pixels.height(); y += rows) {
        const int count = std::min(rows, pixels.height() - y);
        xcb_put_image(
            display.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context, static_cast<uint16_t>(pixels.width()),
            static_cast<uint16_t>(count), static_cast<int16_t>(position.x()), static_cast<int16_t>(position.y() + y), 0,
            display.screen->root_depth, static_cast<uint32_t>(pixels.bytesPerLine() * count), pixels.constScanLine(y));
    }
}

} // namespace quenby
