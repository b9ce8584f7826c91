// Watches for a tray by XEmbed (System Tray Protocol 0.3): somebody owns the selection _NET_SYSTEM_TRAY_Sn of the
// screen. A new owner tells by a MANAGER message to the root window, and is gone with the window that it owns it by.
#pragma once

#include "platform/linux/desktop/TrayWatch.h"

#include <QAbstractNativeEventFilter>

#include <xcb/xcb.h>

namespace quenby {

// Finds no tray where the application does not run on X11.
class EmbedTrayWatch final : public TrayWatch, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    EmbedTrayWatch();
    ~EmbedTrayWatch() override;

    TrayKind kind() const override { return TrayKind::xEmbed; }

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    xcb_atom_t atom(const QByteArray& name) const;
    void findOwner();
    // Whether the window is still there; its end will be told.
    bool watchWindow(xcb_window_t window) const;

    xcb_connection_t* connection_ = nullptr; // the application's
    xcb_atom_t manager_ = XCB_ATOM_NONE;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_window_t owner_ = XCB_WINDOW_NONE;
};

} // namespace quenby
