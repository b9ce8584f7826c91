#include "preferences/shortcut/ShortcutRules.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace quenby {
namespace {

struct ShortcutRules {
    Q_DECLARE_TR_FUNCTIONS(quenby::ShortcutRules)
};

// Who needs a chord that is refused.
enum class Owner { system, windows, editing, everyProgram, quenby };

struct Reserved {
    QKeyCombination chord;
    Owner owner;
};

// Short on purpose: what a single desktop has of its own is refused by that desktop, when the keys are bound.
const Reserved reserved[] = {
    {Qt::CTRL | Qt::ALT | Qt::Key_Delete, Owner::system},
    {Qt::CTRL | Qt::ALT | Qt::Key_Backspace, Owner::system},
    {Qt::ALT | Qt::Key_F4, Owner::windows},
    {Qt::ALT | Qt::Key_Tab, Owner::windows},
    {Qt::ALT | Qt::SHIFT | Qt::Key_Tab, Owner::windows},
    {Qt::ALT | Qt::Key_Space, Owner::windows},
    {Qt::CTRL | Qt::Key_A, Owner::editing},
    {Qt::CTRL | Qt::Key_C, Owner::editing},
    {Qt::CTRL | Qt::Key_V, Owner::editing},
    {Qt::CTRL | Qt::Key_X, Owner::editing},
    {Qt::CTRL | Qt::Key_Y, Owner::editing},
    {Qt::CTRL | Qt::Key_Z, Owner::editing},
    {Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Owner::editing},
    {Qt::CTRL | Qt::Key_F, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_N, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_O, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_P, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_Q, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_S, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_W, Owner::everyProgram},
    {Qt::CTRL | Qt::Key_R, Owner::quenby},
    {Qt::CTRL | Qt::Key_T, Owner::quenby},
    {Qt::CTRL | Qt::Key_Tab, Owner::quenby},
    {Qt::CTRL | Qt::SHIFT | Qt::Key_Tab, Owner::quenby},
    {Qt::CTRL | Qt::Key_PageUp, Owner::quenby},
    {Qt::CTRL | Qt::Key_PageDown, Owner::quenby},
    {Qt::CTRL | Qt::Key_Plus, Owner::quenby},
    {Qt::CTRL | Qt::Key_Equal, Owner::quenby},
    {Qt::CTRL | Qt::Key_Minus, Owner::quenby},
    {Qt::CTRL | Qt::Key_0, Owner::quenby},
    {Qt::ALT | Qt::Key_Left, Owner::quenby},
    {Qt::ALT | Qt::Key_Right, Owner::quenby},
    {QKeyCombination(Qt::Key_F5), Owner::quenby},
    {QKeyCombination(Qt::Key_F11), Owner::quenby},
};

QString ownersSentence(Owner owner, const QString& keys) {
    switch (owner) {
    case Owner::system:
        return ShortcutRules::tr("%1 belongs to the system itself. Choose other keys.").arg(keys);
    case Owner::windows:
        return ShortcutRules::tr("%1 is how windows are switched, closed and moved. Choose other keys.").arg(keys);
    case Owner::editing:
        return ShortcutRules::tr("%1 edits text in every program. Choose other keys.").arg(keys);
    case Owner::everyProgram:
        return ShortcutRules::tr("%1 is a command of nearly every program. Choose other keys.").arg(keys);
    case Owner::quenby:
        return ShortcutRules::tr("%1 is a command of Quenby's own window. Choose other keys.").arg(keys);
    }
    Q_UNREACHABLE();
}

bool isBetween(Qt::Key key, Qt::Key first, Qt::Key last) { return key >= first && key <= last; }

// Nobody types with them, nor moves about.
bool mayStandAlone(Qt::Key key) {
    return isBetween(key, Qt::Key_F1, Qt::Key_F35) || isBetween(key, Qt::Key_Back, Qt::Key_Settings) ||
           key == Qt::Key_Print || key == Qt::Key_SysReq || key == Qt::Key_Pause || key == Qt::Key_Help;
}

bool isModifierOrLock(Qt::Key key) {
    return isBetween(key, Qt::Key_Shift, Qt::Key_ScrollLock) || isBetween(key, Qt::Key_Super_L, Qt::Key_Super_R) ||
           isBetween(key, Qt::Key_Hyper_L, Qt::Key_Hyper_R) || key == Qt::Key_AltGr;
}

// Not every key of every keyboard has one.
bool hasName(QKeyCombination chord) {
    const QKeySequence keys(chord);
    return chord.key() != 0 && chord.key() != Qt::Key_unknown && !isModifierOrLock(chord.key()) &&
           QKeySequence::fromString(keys.toString(QKeySequence::PortableText), QKeySequence::PortableText) == keys;
}

const Reserved* reservation(QKeyCombination chord) {
    const auto* const found = std::find_if(std::begin(reserved), std::end(reserved),
                                           [chord](const Reserved& entry) { return entry.chord == chord; });
    return found == std::end(reserved) ? nullptr : found;
}

bool switchesConsole(QKeyCombination chord) {
    return chord.keyboardModifiers() == (Qt::ControlModifier | Qt::AltModifier) &&
           isBetween(chord.key(), Qt::Key_F1, Qt::Key_F12);
}

} // namespace

QString refusalOfShortcut(QKeyCombination chord, Qt::Key latinKey) {
    const QString keys = QKeySequence(chord).toString(QKeySequence::NativeText);
    // A command does not ask on which part of the keyboard its key lies.
    const Qt::KeyboardModifiers modifiers = chord.keyboardModifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier);
    if (!hasName(chord))
        return ShortcutRules::tr("This key has no name by which it could be remembered. Choose another one.");
    if (!modifiers.testAnyFlags(Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier) &&
        !mayStandAlone(chord.key()))
        return ShortcutRules::tr("%1 is needed in other programs. Hold Ctrl, Alt or Meta with it.").arg(keys);
    const Reserved* entry = reservation(QKeyCombination(modifiers, chord.key()));
    if (!entry && latinKey != Qt::Key_unknown)
        entry = reservation(QKeyCombination(modifiers, latinKey));
    if (entry)
        return ownersSentence(entry->owner, keys);
    return switchesConsole(chord) ? ownersSentence(Owner::system, keys) : QString();
}

QKeySequence storedShortcut(const QVariant& value) {
    // A settings file that was written by hand makes a list of what has a comma in it.
    const bool isList = value.typeId() == QMetaType::QStringList;
    if (!isList && value.typeId() != QMetaType::QString)
        return {};
    const QString text = isList ? value.toStringList().join(QLatin1Char(',')) : value.toString();
    const auto keys = QKeySequence::fromString(text, QKeySequence::PortableText);
    return keys.isEmpty() || !refusalOfShortcut(keys[0]).isEmpty() ? QKeySequence() : QKeySequence(keys[0]);
}

QVariant storedForm(const QKeySequence& keys) { return keys.toString(QKeySequence::PortableText); }

} // namespace quenby
