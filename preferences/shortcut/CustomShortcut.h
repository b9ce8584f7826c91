// The one global shortcut: on or off by its setting, whoever writes it; it lives as long as the program, with or
// without a preferences window.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/Error.h"
#include "preferences/shortcut/ShortcutBinder.h"

#include <QObject>

namespace quenby {

class CustomShortcut : public QObject {
    Q_OBJECT

public:
    CustomShortcut(GlobalShortcuts& shortcuts, Defaults& defaults);

    // The setting.
    bool isShortcutEnabled() const;
    void setShortcutEnabled(bool isEnabled);
    // Binds the stored keys anew, or nothing when they are switched off. At the launch, and whenever the preferences
    // window opens: what another program held may be free by then.
    void resetShortcutRegistration();
    // What the setting stands for, without writing it.
    void setCustomShortcutEnabled(bool isEnabled);

    ShortcutBinder& binder() { return binder_; }

Q_SIGNALS:
    // The keys were pressed: the workspace window is to come to the front.
    void ShowMainWindow();
    // Whether it is on, whether it works, or with which keys.
    void stateChanged();

private:
    void settingChanged(const QString& key);

    Defaults& defaults_;
    ShortcutBinder binder_;
    bool isStoring_ = false; // the setting is being written here
};

} // namespace quenby
