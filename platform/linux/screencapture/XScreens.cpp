#include "platform/linux/screencapture/XScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <xcb/randr.h>

namespace quenby {
namespace {

// As the display has them; empty when it cannot tell.
QList<QRect> readMonitors(const XDisplay& display) {
    const auto* extension = xcb_get_extension_data(display.connection, &xcb_randr_id);
    if (!extension || !extension->present)
        return {};
    const XReply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
        display.connection, xcb_randr_get_monitors(display.connection, display.screen->root, true), nullptr));
    QList<QRect> monitors;
    if (!reply)
        return monitors;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem;
         xcb_randr_monitor_info_next(&each))
        monitors.append({each.data->x, each.data->y, each.data->width, each.data->height});
    return monitors;
}

// The toolkit keeps a screen's origin in pixels, and divides and rounds its size: the true size is near what
// multiplying gives.
QRect pixelsOf(const QScreen& screen, const QList<QRect>& monitors) {
    const QSize about = (QSizeF(screen.geometry().size()) * screen.devicePixelRatio()).toSize();
    for (const QRect& monitor : monitors) {
        const QSize difference = monitor.size() - about;
        if (monitor.topLeft() == screen.geometry().topLeft() && qAbs(difference.width()) <= 2 &&
            qAbs(difference.height()) <= 2)
            return monitor;
    }
    return {screen.geometry().topLeft(), about};
}

} // namespace

QList<CaptureScreen> readScreens(const XDisplay& display) {
    const QList<QRect> monitors = readMonitors(display);
    QList<CaptureScreen> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect pixels = pixelsOf(*screen, monitors) & display.desktop();
        if (!pixels.isEmpty())
            screens.append({pixels, screen->devicePixelRatio()});
    }
    if (screens.isEmpty())
        screens.append({display.desktop(), 1});
    return screens;
}

} // namespace quenby
