#include "platform/linux/shortcuts/PortalTrigger.h"

#include "platform/linux/shortcuts/KeySymbols.h"

#include <QChar>

#include <array>
#include <optional>

namespace quenby {
namespace {

struct Range {
    xkb_keysym_t first;
    xkb_keysym_t last;
};

// Where the symbols of keys lie that write no letter.
constexpr Range keypad{XKB_KEY_KP_Space, XKB_KEY_KP_9};
constexpr std::array keysWithoutLetters{Range{0xff00, 0xffff}, Range{0xfe00, 0xfeff}, Range{0x1008fe00, 0x1008ffff}};

// The range from its end: it has the common symbol of a key behind the odd one.
std::optional<xkb_keysym_t> symbolIn(const Range& range, Qt::Key key, bool keypadToo) {
    for (xkb_keysym_t symbol = range.last; symbol >= range.first; --symbol)
        if ((keypadToo || !isOnKeypad(symbol)) && keyOfSymbol(symbol) == key)
            return symbol;
    return std::nullopt;
}

std::optional<xkb_keysym_t> symbolOf(Qt::Key key, bool isKeypad) {
    if (key == Qt::Key_unknown) // which every symbol is that is no key
        return std::nullopt;
    if (isKeypad)
        if (const auto symbol = symbolIn(keypad, key, true))
            return symbol;
    if (const auto code = static_cast<char32_t>(key); code <= QChar::LastValidCodePoint) {
        const xkb_keysym_t symbol = xkb_utf32_to_keysym(QChar::toLower(code));
        return symbol == XKB_KEY_NoSymbol ? std::nullopt : std::optional(symbol);
    }
    for (const bool keypadToo : {false, true}) // there are keys that only a keypad has
        for (const Range& range : keysWithoutLetters)
            if (const auto symbol = symbolIn(range, key, keypadToo))
                return symbol;
    return std::nullopt;
}

} // namespace

QString portalTrigger(const QKeySequence& keys) {
    if (keys.isEmpty())
        return {};
    Qt::KeyboardModifiers modifiers = keys[0].keyboardModifiers();
    Qt::Key key = keys[0].key();
    if (key == Qt::Key_Backtab) { // it is the other key's name while Shift is held
        key = Qt::Key_Tab;
        modifiers |= Qt::ShiftModifier;
    }
    const auto symbol = symbolOf(key, modifiers.testFlag(Qt::KeypadModifier));
    std::array<char, 64> name{};
    if (!symbol || xkb_keysym_get_name(*symbol, name.data(), name.size()) <= 0)
        return {};
    QString trigger;
    if (modifiers.testFlag(Qt::ControlModifier))
        trigger += QLatin1String("CTRL+");
    if (modifiers.testFlag(Qt::AltModifier))
        trigger += QLatin1String("ALT+");
    if (modifiers.testFlag(Qt::ShiftModifier))
        trigger += QLatin1String("SHIFT+");
    if (modifiers.testFlag(Qt::MetaModifier))
        trigger += QLatin1String("LOGO+");
    return trigger + QString::fromLatin1(name.data());
}

} // namespace quenby
