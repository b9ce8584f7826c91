// A desktop's portal that hands out global shortcuts, and somebody who presses them.
#pragma once

#include "tests/platform/portal/FakePortal.h"

#include <QDBusArgument>
#include <QMap>

namespace quenby::testing {

// One of the array "a(sa{sv})".
struct FakeShortcut {
    QString identifier;
    QVariantMap properties;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const FakeShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.identifier << shortcut.properties;
    argument.endStructure();
    return argument;
}
inline const QDBusArgument& operator>>(const QDBusArgument& argument, FakeShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.identifier >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace quenby::testing

Q_DECLARE_METATYPE(quenby::testing::FakeShortcut)

namespace quenby::testing {

class FakeShortcutsPortal final : public FakePortal {
public:
    static inline const QString interface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

    // Set before the test asks.
    enum class Tells { atOnce, whenListed, never };
    Tells tells = Tells::atOnce; // which of the shortcuts the user agreed to, and what keys they have
    bool userAgrees = true;      // to each of those that are bound
    QStringList taken;           // triggers that others have
    QString chosen = QStringLiteral("Super and Q");

    FakeShortcutsPortal() {
        qDBusRegisterMetaType<FakeShortcut>();
        qDBusRegisterMetaType<QList<FakeShortcut>>();
        interfaces[interface] = {{QStringLiteral("version"), 1U}};
    }

    // What the last session was asked for.
    QVariantMap properties(const QString& identifier) const { return bound_.value(session.path()).value(identifier); }
    int binds() const { return binds_; }

    // Presses keys, and lets go of them. Whether anybody has them.
    bool press(const QString& trigger, const QVariantMap& with = {}) {
        const bool isAnybody = hold(trigger, time_ += 10'000, with);
        if (isAnybody)
            tell(interface, QStringLiteral("Deactivated"), {held_, heldIdentifier_, time_, QVariantMap()});
        return isAnybody;
    }
    bool hold(const QString& trigger, qulonglong time, const QVariantMap& with = {}) {
        for (auto asked = bound_.cbegin(); asked != bound_.cend(); ++asked) {
            for (auto each = asked->cbegin(); each != asked->cend(); ++each) {
                if (closed.contains(asked.key()) || each->value(QStringLiteral("preferred_trigger")) != trigger)
                    continue;
                held_ = QVariant::fromValue(QDBusObjectPath(asked.key()));
                heldIdentifier_ = each.key();
                tell(interface, QStringLiteral("Activated"), {held_, heldIdentifier_, time, with});
                return true;
            }
        }
        return false;
    }
    // The user does, in the desktop's settings.
    void chooseKeys(const QString& keys) {
        chosen = keys;
        tell(interface, QStringLiteral("ShortcutsChanged"),
             {QVariant::fromValue(session), QVariant::fromValue(shortcutsOf(session.path()))});
    }

private:
    static QString sessionIn(const QDBusMessage& message) {
        return message.arguments().value(0).value<QDBusObjectPath>().path();
    }
    static QList<FakeShortcut> shortcutsIn(const QDBusMessage& message) {
        const QVariant shortcuts = message.arguments().value(1);
        return shortcuts.value<QDBusArgument>().currentSignature() == QLatin1String("a(sa{sv})")
                   ? qdbus_cast<QList<FakeShortcut>>(shortcuts)
                   : QList<FakeShortcut>();
    }
    QList<FakeShortcut> shortcutsOf(const QString& sessionPath) const {
        QList<FakeShortcut> list;
        if (!userAgrees)
            return list;
        for (auto each = bound_[sessionPath].cbegin(); each != bound_[sessionPath].cend(); ++each)
            list << FakeShortcut{each.key(),
                                 {{QStringLiteral("description"), each->value(QStringLiteral("description"))},
                                  {QStringLiteral("trigger_description"), chosen}}};
        return list;
    }

    Does doesWith(const QDBusMessage& message, const QString& method) const override {
        if (method == QLatin1String("BindShortcuts")) {
            if (bound_.contains(sessionIn(message))) // once a session
                return Does::refuse;
            for (const FakeShortcut& shortcut : shortcutsIn(message))
                if (taken.contains(shortcut.properties.value(QStringLiteral("preferred_trigger")).toString()))
                    return Does::decline;
        }
        return FakePortal::doesWith(message, method);
    }
    QVariantMap resultsOf(const QDBusMessage& message, const QString& method) override {
        const QString shortcuts = QStringLiteral("shortcuts");
        if (method == QLatin1String("BindShortcuts")) {
            ++binds_;
            if (doesWith(message, method) == Does::grant)
                for (const FakeShortcut& shortcut : shortcutsIn(message))
                    bound_[sessionIn(message)][shortcut.identifier] = shortcut.properties;
            if (tells == Tells::atOnce)
                return {{shortcuts, QVariant::fromValue(shortcutsOf(sessionIn(message)))}};
            return {};
        }
        if (method == QLatin1String("ListShortcuts") && tells != Tells::never)
            return {{shortcuts, QVariant::fromValue(shortcutsOf(sessionIn(message)))}};
        return FakePortal::resultsOf(message, method);
    }

    QMap<QString, QMap<QString, QVariantMap>> bound_; // by session and identifier
    int binds_ = 0;
    qulonglong time_ = 0; // milliseconds
    QVariant held_;       // the session
    QString heldIdentifier_;
};

} // namespace quenby::testing
