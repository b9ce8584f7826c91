// Settings in memory. Values come back as a settings file gives them back after a restart: numbers and truth as text.
#pragma once

#include "platform/Defaults.h"

#include <QHash>

namespace quenby::testing {

class FakeDefaults final : public Defaults {
public:
    QVariant valueForKey(const QString& key) const override { return values_.value(key); }

    void setValueForKey(const QString& key, const QVariant& value) override {
        if (!value.isValid())
            return removeValueForKey(key);
        const QVariant stored = asStored(value);
        if (values_.contains(key) && values_.value(key) == stored)
            return;
        values_.insert(key, stored);
        Q_EMIT changed(key);
    }

    void removeValueForKey(const QString& key) override {
        if (values_.remove(key))
            Q_EMIT changed(key);
    }

    // For tests: what is there, and a word about the settings as the real ones would say it.
    QStringList keys() const { return values_.keys(); }
    bool contains(const QString& key) const { return values_.contains(key); }
    void tellTrouble(const QString& sentence) { Q_EMIT troubled(sentence); }

private:
    static QVariant asStored(const QVariant& value) {
        switch (value.typeId()) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Float:
        case QMetaType::Double:
            return value.toString();
        default:
            return value;
        }
    }

    QHash<QString, QVariant> values_;
};

} // namespace quenby::testing
