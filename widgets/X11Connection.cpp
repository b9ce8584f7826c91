#include "widgets/X11Connection.h"

#include <QGuiApplication>

namespace quenby {

xcb_connection_t* x11Connection() {
    // Nothing is left of it once the application has gone.
    const auto* x11 = !qApp ? nullptr : qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

} // namespace quenby
