#include "platform/linux/shortcuts/DesktopShortcuts.h"

#include "platform/linux/shortcuts/PortalShortcuts.h"
#include "platform/linux/shortcuts/X11Shortcuts.h"
#include "platform/linux/x11/XDisplay.h"

#include <QGuiApplication>

namespace quenby {
namespace {

class NoShortcuts final : public GlobalShortcuts {
public:
    QString unavailableBecause() const override {
        return QStringLiteral("Global shortcuts do not work on this kind of display. Log in to a desktop on X11, or to "
                              "one on Wayland whose portal has them.");
    }
    CompletionTicket bind(const GlobalShortcut&, QObject* context, Bound bound) override {
        const CompletionGate<MaybeError> gate(context, std::move(bound));
        gate.deliver(Error(URLErrorCode::unknown, {{errorKey::reason, unavailableBecause()}}));
        return gate.ticket();
    }
    void unbind(const QString&) override {}
    QString keysChosenByDesktop(const QString&) const override { return {}; }
};

// Also when the program itself goes through the X server that Wayland desktops have for older programs: that one's keys
// are those that are pressed in such programs.
bool isWayland() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

std::unique_ptr<GlobalShortcuts> makeDesktopShortcuts() {
    if (isWayland())
        return std::make_unique<PortalShortcuts>(QDBusConnection::sessionBus());
    if (XDisplay::ofApplication())
        return std::make_unique<X11Shortcuts>();
    return std::make_unique<NoShortcuts>();
}

} // namespace quenby
