#include "platform/linux/media/engine/capture/PortalSource.h"
#include "platform/linux/media/engine/capture/X11Source.h"

#include <QGuiApplication>

namespace quenby {
namespace {

// Also when the program itself goes through the X server that Wayland desktops have for older programs: that one shows
// nothing but such programs.
bool isWayland() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

std::unique_ptr<CaptureSource> makeCaptureSource(std::shared_ptr<ScreenCastTokens> tokens) {
    if (isWayland())
        return std::make_unique<PortalSource>(std::move(tokens));
    return std::make_unique<X11Source>();
}

} // namespace quenby
