#include "platform/linux/screencapture/XScreens.h"

#include "platform/linux/x11/ScreenMonitors.h"

#include <QGuiApplication>
#include <QScreen>

namespace quenby {
QList<CaptureScreen> readScreens(const XDisplay& display) {
    const QList<ScreenMonitor> monitors = readMonitors(display.connection, display.screen->root);
    QList<CaptureScreen> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect pixels =
            pixelsOfScreen(screen->name(), screen->geometry(), screen->devicePixelRatio(), monitors, display.desktop());
        if (!pixels.isEmpty())
            screens.append({pixels, screen->devicePixelRatio()});
    }
    if (screens.isEmpty())
        screens.append({display.desktop(), 1});
    return screens;
}

} // namespace quenby
