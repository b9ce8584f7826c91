#include "platform/linux/x11/ScreenMonitors.h"

#include "core/CAllocated.h"

#include <xcb/randr.h>

#include <vector>

namespace quenby {
namespace {

bool hasMonitors(xcb_connection_t* connection) {
    const auto* extension = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!extension || !extension->present)
        return false;
    const CAllocated<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(connection, xcb_randr_query_version(connection, 1, 5), nullptr));
    return version && (version->major_version > 1 || version->minor_version >= 5);
}

// Differences that come of dividing, rounding and multiplying.
bool isAbout(const QSize& size, const QSize& other, qreal scale) {
    const qreal rounding = scale / 2 + 1;
    return qAbs(size.width() - other.width()) <= rounding && qAbs(size.height() - other.height()) <= rounding;
}

} // namespace

QList<ScreenMonitor> readMonitors(xcb_connection_t* connection, quint32 root) {
    if (!hasMonitors(connection))
        return {};
    const bool isActiveOnly = true;
    const CAllocated<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(connection, xcb_randr_get_monitors(connection, root, isActiveOnly), nullptr));
    if (!reply)
        return {};
    QList<ScreenMonitor> monitors;
    std::vector<xcb_get_atom_name_cookie_t> names; // all asked for, before one is waited for
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem;
         xcb_randr_monitor_info_next(&each)) {
        names.push_back(xcb_get_atom_name(connection, each.data->name));
        monitors.append({{}, QRect(each.data->x, each.data->y, each.data->width, each.data->height)});
    }
    for (qsizetype i = 0; i < monitors.size(); ++i) {
        const CAllocated<xcb_get_atom_name_reply_t> name(
            xcb_get_atom_name_reply(connection, names[static_cast<size_t>(i)], nullptr));
        if (name)
            monitors[i].name =
                QString::fromUtf8(xcb_get_atom_name_name(name.get()), xcb_get_atom_name_name_length(name.get()));
    }
    return monitors;
}

QRect pixelsOfScreen(const QString& name, const QRect& geometry, qreal scale, const QList<ScreenMonitor>& monitors,
                     const QRect& root) {
    const QRect computed(geometry.topLeft(), (QSizeF(geometry.size()) * scale).toSize());
    const ScreenMonitor* found = nullptr;
    for (const ScreenMonitor& monitor : monitors) {
        const bool isAtItsPlace =
            monitor.pixels.topLeft() == computed.topLeft() && isAbout(monitor.pixels.size(), computed.size(), scale);
        if (isAtItsPlace && (!found || monitor.name == name))
            found = &monitor;
    }
    return (found ? found->pixels : computed) & root;
}

} // namespace quenby
