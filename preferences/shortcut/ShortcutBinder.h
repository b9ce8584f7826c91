// Binds the keys that a setting holds to an action, and follows the setting: other keys act at once, no keys bind
// nothing.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"

#include <QHash>
#include <QKeySequence>
#include <QObject>

#include <functional>

namespace quenby {

class Defaults;
class GlobalShortcuts;

class ShortcutBinder : public QObject {
    Q_OBJECT

public:
    ShortcutBinder(GlobalShortcuts& shortcuts, Defaults& defaults);
    ~ShortcutBinder() override;

    // The description says for people what the action does. Binding a key again asks the desktop again.
    void bindShortcutWithDefaultsKey(const QString& key, const QString& description, std::function<void()> toAction);
    // At once.
    void breakBindingWithDefaultsKey(const QString& key);
    // While somebody chooses other keys, the present ones do nothing.
    void setSuspended(bool isSuspended);

    // Why the keys of the setting do not work; null while they do, or while nothing is bound.
    MaybeError trouble(const QString& key) const;
    // What the desktop chose in place of the setting's keys, in words; else empty.
    QString keysChosenByDesktop(const QString& key) const;
    // The setting's first chord; empty when it holds none that can be used.
    QKeySequence keysOf(const QString& key) const;

Q_SIGNALS:
    // trouble() or keysChosenByDesktop() may have other answers.
    void stateChanged(const QString& key);

private:
    struct Binding {
        QString description;
        std::function<void()> action;
        QKeySequence keys;       // what was bound last; empty when there was nothing to bind
        MaybeError trouble;      // with those keys
        CompletionTicket answer; // of the desktop, to the last request
    };

    void settingChanged(const QString& key);
    void bind(const QString& key);
    void learn(const QString& key, const MaybeError& trouble);
    void activate(const QString& key);

    GlobalShortcuts& shortcuts_;
    Defaults& defaults_;
    QHash<QString, Binding> bindings_; // by the setting's key, which is the shortcut's identifier as well
    bool isSuspended_ = false;
};

} // namespace quenby
