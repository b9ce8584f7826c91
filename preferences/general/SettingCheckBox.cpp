#include "preferences/general/SettingCheckBox.h"

#include "platform/Defaults.h"

#include <utility>

namespace quenby {

SettingCheckBox::SettingCheckBox(const QString& text, Defaults& defaults, QString key, bool absent, QWidget* parent)
    : QCheckBox(text, parent)
    , defaults_(defaults)
    , key_(std::move(key))
    , absent_(absent)
    , write_([this](bool isOn) { defaults_.setValueForKey(key_, isOn); }) {
    refresh();
    // Not clicked(): assistive programs switch it without a click.
    connect(this, &QCheckBox::toggled, this, [this](bool isOn) {
        if (isOn != isSet())
            write_(isOn);
    });
    connect(&defaults_, &Defaults::changed, this, [this](const QString& changed) {
        if (changed == key_)
            refresh();
    });
}

void SettingCheckBox::refresh() { setChecked(isSet()); }

bool SettingCheckBox::isSet() const { return defaults_.boolForKey(key_, absent_); }

} // namespace quenby
