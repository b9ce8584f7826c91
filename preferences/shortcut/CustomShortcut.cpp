#include "preferences/shortcut/CustomShortcut.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

#include <QScopedValueRollback>

namespace quenby {

CustomShortcut::CustomShortcut(GlobalShortcuts& shortcuts, Defaults& defaults)
    : defaults_(defaults)
    , binder_(shortcuts, defaults) {
    connect(&binder_, &ShortcutBinder::stateChanged, this, &CustomShortcut::stateChanged);
    connect(&defaults_, &Defaults::changed, this, &CustomShortcut::settingChanged);
}

bool CustomShortcut::isShortcutEnabled() const { return defaults_.boolForKey(defaultsKey::customShortcutEnabled); }

void CustomShortcut::setShortcutEnabled(bool isEnabled) {
    {
        // Bound once, not once more because the setting changed.
        const QScopedValueRollback storing(isStoring_, true);
        defaults_.setValueForKey(defaultsKey::customShortcutEnabled, isEnabled);
    }
    resetShortcutRegistration();
}

void CustomShortcut::resetShortcutRegistration() { setCustomShortcutEnabled(isShortcutEnabled()); }

void CustomShortcut::setCustomShortcutEnabled(bool isEnabled) {
    if (isEnabled)
        binder_.bindShortcutWithDefaultsKey(defaultsKey::customShortcut, tr("Show Quenby"),
                                            [this] { Q_EMIT ShowMainWindow(); });
    else
        binder_.breakBindingWithDefaultsKey(defaultsKey::customShortcut);
    Q_EMIT stateChanged();
}

void CustomShortcut::settingChanged(const QString& key) {
    if (key == defaultsKey::customShortcutEnabled && !isStoring_)
        setCustomShortcutEnabled(isShortcutEnabled());
    else if (key == defaultsKey::customShortcut && !isShortcutEnabled())
        Q_EMIT stateChanged(); // the binder tells of the keys only while they are bound
}

} // namespace quenby
