#include "preferences/shortcut/PressedKeys.h"

#include <QKeyEvent>
#include <QStringView>

namespace quenby {
namespace {

constexpr Qt::KeyboardModifiers shortcutModifiers =
    Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
constexpr int lastLatinKey = 0xff;

Qt::KeyboardModifier modifierOf(int key) {
    switch (key) {
    case Qt::Key_Shift:
        return Qt::ShiftModifier;
    case Qt::Key_Control:
        return Qt::ControlModifier;
    case Qt::Key_Alt:
        return Qt::AltModifier;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return Qt::MetaModifier;
    default:
        return Qt::NoModifier;
    }
}

bool isLock(int key) {
    switch (key) {
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_AltGr:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_Mode_switch:
    case Qt::Key_Multi_key:
        return true;
    default:
        return false;
    }
}

// Shift is part of a symbol that it makes ("Ctrl+!"), and of nothing else.
bool shiftMadeTheSymbol(int key) {
    return key > Qt::Key_Space && key < Qt::Key_Escape && !QChar::isLetterOrNumber(static_cast<uint>(key));
}

} // namespace

QKeyCombination chordOf(const QKeyEvent& event) {
    int key = event.key();
    if (modifierOf(key) != Qt::NoModifier || isLock(key))
        return QKeyCombination::fromCombined(0);
    Qt::KeyboardModifiers modifiers = event.modifiers() & shortcutModifiers;
    // The other Enter has a name of its own.
    if (key != Qt::Key_Enter)
        modifiers |= event.modifiers() & Qt::KeypadModifier;
    if (key == Qt::Key_Backtab) {
        key = Qt::Key_Tab;
        modifiers |= Qt::ShiftModifier;
    }
    if (shiftMadeTheSymbol(key))
        modifiers &= ~Qt::KeyboardModifiers(Qt::ShiftModifier);
    return QKeyCombination(modifiers, static_cast<Qt::Key>(key));
}

Qt::Key latinKeyOf(const QKeyEvent& event) {
    if (event.key() <= lastLatinKey || event.key() >= Qt::Key_Escape)
        return Qt::Key_unknown;
    // Where the letters lie, by the numbers that both kinds of display give the keys.
    struct Row {
        quint32 firstCode;
        QStringView letters;
    };
    static constexpr Row rows[] = {{24, u"QWERTYUIOP"}, {38, u"ASDFGHJKL"}, {52, u"ZXCVBNM"}};
    const quint32 code = event.nativeScanCode();
    for (const Row& row : rows) {
        if (code >= row.firstCode && code - row.firstCode < static_cast<quint32>(row.letters.size()))
            return static_cast<Qt::Key>(row.letters.at(static_cast<qsizetype>(code - row.firstCode)).unicode());
    }
    return Qt::Key_unknown;
}

Qt::KeyboardModifiers heldAfter(const QKeyEvent& event) {
    const Qt::KeyboardModifiers held = event.modifiers() & shortcutModifiers;
    const Qt::KeyboardModifiers own = modifierOf(event.key());
    return event.type() == QEvent::KeyRelease ? held & ~own : held | own;
}

} // namespace quenby
