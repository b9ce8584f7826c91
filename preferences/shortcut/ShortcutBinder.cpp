#include "preferences/shortcut/ShortcutBinder.h"

#include "platform/Defaults.h"
#include "platform/GlobalShortcuts.h"
#include "preferences/shortcut/ShortcutRules.h"

#include <utility>

namespace quenby {

ShortcutBinder::ShortcutBinder(GlobalShortcuts& shortcuts, Defaults& defaults)
    : shortcuts_(shortcuts)
    , defaults_(defaults) {
    connect(&defaults_, &Defaults::changed, this, &ShortcutBinder::settingChanged);
    connect(&shortcuts_, &GlobalShortcuts::activated, this, &ShortcutBinder::activate);
    connect(&shortcuts_, &GlobalShortcuts::changed, this, &ShortcutBinder::learn);
}

ShortcutBinder::~ShortcutBinder() {
    for (auto binding = bindings_.keyBegin(); binding != bindings_.keyEnd(); ++binding)
        shortcuts_.unbind(*binding);
}

void ShortcutBinder::bindShortcutWithDefaultsKey(const QString& key, const QString& description,
                                                 std::function<void()> toAction) {
    Binding& binding = bindings_[key];
    binding.description = description;
    binding.action = std::move(toAction);
    bind(key);
}

void ShortcutBinder::breakBindingWithDefaultsKey(const QString& key) {
    if (!bindings_.contains(key))
        return;
    bindings_.take(key).answer.cancel();
    shortcuts_.unbind(key);
    Q_EMIT stateChanged(key);
}

void ShortcutBinder::setSuspended(bool isSuspended) {
    if (std::exchange(isSuspended_, isSuspended) == isSuspended)
        return;
    const QStringList keys = bindings_.keys();
    for (const QString& key : keys)
        bind(key);
}

void ShortcutBinder::settingChanged(const QString& key) {
    if (bindings_.contains(key))
        bind(key);
}

void ShortcutBinder::bind(const QString& key) {
    Binding& binding = bindings_[key];
    binding.answer.cancel();
    const QKeySequence keys = keysOf(key);
    // The same keys are in the same trouble until the desktop says otherwise.
    if (std::exchange(binding.keys, keys) != keys)
        binding.trouble.reset();
    if (isSuspended_ || keys.isEmpty())
        shortcuts_.unbind(key);
    else
        binding.answer = shortcuts_.bind({key, binding.description, keys}, this,
                                         [this, key](const MaybeError& trouble) { learn(key, trouble); });
    Q_EMIT stateChanged(key);
}

// What is told of its own accord is newer than an answer that is still on its way.
void ShortcutBinder::learn(const QString& key, const MaybeError& trouble) {
    const auto binding = bindings_.find(key);
    if (binding == bindings_.end() || binding->keys.isEmpty() || isSuspended_)
        return;
    binding->answer.cancel();
    binding->trouble = trouble;
    Q_EMIT stateChanged(key);
}

void ShortcutBinder::activate(const QString& key) {
    const auto binding = bindings_.constFind(key);
    if (binding == bindings_.constEnd() || binding->keys.isEmpty() || isSuspended_)
        return;
    const auto action = binding->action; // which may break the binding
    if (action)
        action();
}

MaybeError ShortcutBinder::trouble(const QString& key) const { return bindings_.value(key).trouble; }

QString ShortcutBinder::keysChosenByDesktop(const QString& key) const {
    return bindings_.contains(key) ? shortcuts_.keysChosenByDesktop(key) : QString();
}

QKeySequence ShortcutBinder::keysOf(const QString& key) const { return storedShortcut(defaults_.valueForKey(key)); }

} // namespace quenby
