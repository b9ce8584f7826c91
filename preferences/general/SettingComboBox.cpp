#include "preferences/general/SettingComboBox.h"

#include "platform/Defaults.h"

#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace quenby {

SettingComboBox::SettingComboBox(Defaults& defaults, QString key, QWidget* parent)
    : QComboBox(parent)
    , defaults_(defaults)
    , key_(std::move(key)) {
    connect(this, &QComboBox::currentIndexChanged, this, &SettingComboBox::write);
    connect(&defaults_, &Defaults::changed, this, [this](const QString& changed) {
        if (changed == key_)
            refresh();
    });
}

void SettingComboBox::addChoice(const QString& text, const QString& value) {
    const QSignalBlocker quiet(this); // the first one becomes the current one, which nobody chose
    addItem(text, value);
    refresh();
}

void SettingComboBox::refresh() { setCurrentIndex(stored()); }

int SettingComboBox::stored() const {
    const QVariant value = defaults_.valueForKey(key_);
    // A list of one text would be read as that text, too.
    return value.typeId() == QMetaType::QString ? std::max(0, findData(value)) : 0;
}

void SettingComboBox::write(int index) {
    if (index < 0 || index == stored())
        return;
    const QString value = itemData(index).toString();
    if (value.isEmpty())
        defaults_.removeValueForKey(key_);
    else
        defaults_.setValueForKey(key_, value);
}

// Turned for scrolling, it must not change a setting.
void SettingComboBox::wheelEvent(QWheelEvent* event) { event->ignore(); }

} // namespace quenby
