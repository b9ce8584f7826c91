#include "platform/Defaults.h"

namespace quenby {

bool Defaults::boolForKey(const QString& key, bool absent) const {
    const QVariant value = valueForKey(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    // A settings file knows only text. A list of one text would be read as that text, too.
    if (value.typeId() != QMetaType::QString)
        return absent;
    const QString text = value.toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("yes") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("no") || text == QLatin1String("0"))
        return false;
    return absent;
}

} // namespace quenby
