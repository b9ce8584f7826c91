// Global shortcuts of a keyboard that the test plays.
#pragma once

#include "platform/GlobalShortcuts.h"

#include <QMap>

namespace quenby::testing {

class FakeGlobalShortcuts final : public GlobalShortcuts {
public:
    QString unavailable;             // why there are none
    QMap<QString, MaybeError> taken; // by keys (PortableText): why they cannot be had
    QString chosenByDesktop;

    QString unavailableBecause() const override { return unavailable; }
    CompletionTicket bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) override {
        const CompletionGate<MaybeError> gate(context, std::move(bound));
        ++binds_;
        bound_.remove(shortcut.identifier);
        const MaybeError trouble = taken.value(shortcut.keys.toString(QKeySequence::PortableText));
        if (!trouble)
            bound_.insert(shortcut.identifier, shortcut);
        gate.deliver(trouble);
        return gate.ticket();
    }
    void unbind(const QString& identifier) override { bound_.remove(identifier); }
    QString keysChosenByDesktop(const QString& identifier) const override {
        return bound_.contains(identifier) ? chosenByDesktop : QString();
    }

    // Whether anybody hears of them.
    bool press(const QString& keys) {
        const auto sequence = QKeySequence::fromString(keys, QKeySequence::PortableText);
        for (const GlobalShortcut& shortcut : std::as_const(bound_)) {
            if (shortcut.keys == sequence) {
                Q_EMIT activated(shortcut.identifier);
                return true;
            }
        }
        return false;
    }
    const QMap<QString, GlobalShortcut>& bound() const { return bound_; }
    int binds() const { return binds_; }

private:
    QMap<QString, GlobalShortcut> bound_;
    int binds_ = 0;
};

} // namespace quenby::testing
