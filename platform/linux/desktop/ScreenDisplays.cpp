#include "platform/linux/desktop/ScreenDisplays.h"

#include "core/CAllocated.h"
#include "platform/linux/x11/ScreenMonitors.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

#include <xcb/xcb.h>

namespace quenby {
namespace {

xcb_connection_t* connectionOfApplication() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

struct Root {
    int number = 0; // the X server's "screen", of which there is one; monitors are parts of it
    quint32 window = XCB_WINDOW_NONE;
    QRect pixels;
};

Root readRoot(xcb_connection_t* connection) {
    Root root;
    char* host = nullptr;
    int display = 0;
    if (xcb_parse_display(nullptr, &host, &display, &root.number))
        std::free(host);
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < root.number && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    root.window = screens.data->root;
    // What stands in the setup is the size at the start.
    const CAllocated<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, root.window), nullptr));
    if (geometry)
        root.pixels = QRect(0, 0, geometry->width, geometry->height);
    return root;
}

quint32 compositorSelection(xcb_connection_t* connection) {
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(readRoot(connection).number);
    const CAllocated<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, false, static_cast<uint16_t>(name.size()), name.constData()), nullptr));
    return atom ? atom->atom : quint32(XCB_ATOM_NONE);
}

bool isWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

} // namespace

ScreenDisplays::ScreenDisplays()
    : connection_(connectionOfApplication()) {
    if (connection_)
        compositor_ = compositorSelection(connection_);
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
        watch(screen);
        mayHaveChanged();
    });
    connect(qApp, &QGuiApplication::screenRemoved, this, [this](QScreen* screen) {
        screen->disconnect(this);
        identifiers_.remove(screen);
        mayHaveChanged();
    });
    connect(qApp, &QGuiApplication::primaryScreenChanged, this, &ScreenDisplays::mayHaveChanged);
    told_ = all();
    toldMain_ = main().identifier;
}

void ScreenDisplays::watch(QScreen* screen) {
    if (identifiers_.contains(screen))
        return;
    identifiers_.insert(screen, ++lastIdentifier_);
    connect(screen, &QScreen::geometryChanged, this, &ScreenDisplays::mayHaveChanged);
    // A scale has no signal of its own; it comes with one of these.
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, &ScreenDisplays::mayHaveChanged);
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, &ScreenDisplays::mayHaveChanged);
}

// One change of the desktop is told by the toolkit in many pieces.
void ScreenDisplays::mayHaveChanged() {
    displays_.reset();
    if (!std::exchange(isTelling_, true))
        QMetaObject::invokeMethod(this, &ScreenDisplays::tellChange, Qt::QueuedConnection);
}

void ScreenDisplays::tellChange() {
    isTelling_ = false;
    const QList<Display> before = std::exchange(told_, all());
    const quint32 mainBefore = std::exchange(toldMain_, main().identifier);
    if (before != told_ || mainBefore != toldMain_)
        Q_EMIT changed();
}

QList<Display> ScreenDisplays::all() const {
    if (!displays_)
        displays_ = read();
    return *displays_;
}

QList<Display> ScreenDisplays::read() const {
    const Root root = connection_ ? readRoot(connection_) : Root();
    const QList<ScreenMonitor> monitors = connection_ ? readMonitors(connection_, root.window) : QList<ScreenMonitor>();
    QList<Display> displays;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const qreal scale = screen->devicePixelRatio();
        const QSize size = (QSizeF(screen->geometry().size()) * scale).toSize();
        displays.append({identifiers_.value(screen), screen->name(), screen->geometry(),
                         connection_ ? pixelsOfScreen(screen->name(), screen->geometry(), scale, monitors, root.pixels)
                                     : QRect(QPoint(0, 0), size),
                         scale});
    }
    return displays;
}

Display ScreenDisplays::main() const {
    const quint32 identifier = identifiers_.value(QGuiApplication::primaryScreen());
    const QList<Display> displays = all();
    for (const Display& display : displays) {
        if (display.identifier == identifier)
            return display;
    }
    return displays.value(0);
}

QScreen* ScreenDisplays::screen(const Display& display) const {
    for (QScreen* screen : QGuiApplication::screens()) {
        if (identifiers_.value(screen) == display.identifier)
            return screen;
    }
    return nullptr;
}

bool ScreenDisplays::isComposited() const {
    if (!connection_)
        return isWayland();
    const CAllocated<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, compositor_), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

QImage ScreenDisplays::picture(const Display& display) const {
    QScreen* const screen = connection_ ? this->screen(display) : nullptr;
    if (!screen)
        return {};
    // In points one more than it has, as those are rounded; in pixels exactly what it has.
    const QSize size = display.frame.size() + QSize(1, 1);
    const QImage grabbed = screen->grabWindow(0, 0, 0, size.width(), size.height()).toImage();
    if (grabbed.isNull())
        return {};
    QImage picture = grabbed.copy(QRect(QPoint(0, 0), display.pixels.size()));
    picture.setDevicePixelRatio(1);
    return picture;
}

} // namespace quenby
