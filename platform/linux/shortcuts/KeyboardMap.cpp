#include "platform/linux/shortcuts/KeyboardMap.h"

#include "platform/linux/shortcuts/KeySymbols.h"

#include <algorithm>
#include <array>
#include <bit>

namespace quenby {
namespace {

// The toolkit's names and the configuration's. The toolkit, too, calls the Super keys Meta.
struct ModifierName {
    Qt::KeyboardModifier modifier;
    const char* name;
};
constexpr const char* levelThree = "LevelThree";
constexpr std::array modifierNames{
    ModifierName{Qt::ShiftModifier, XKB_MOD_NAME_SHIFT},
    ModifierName{Qt::ControlModifier, XKB_MOD_NAME_CTRL},
    ModifierName{Qt::AltModifier, "Alt"},
    ModifierName{Qt::MetaModifier, "Super"},
    ModifierName{Qt::GroupSwitchModifier, levelThree},
};

constexpr xkb_mod_mask_t realModifiers = 0xff;

struct StateEnd {
    void operator()(xkb_state* state) const { xkb_state_unref(state); }
};
using State = std::unique_ptr<xkb_state, StateEnd>;

State stateWith(xkb_keymap* map, xkb_mod_mask_t modifiers, quint32 layout) {
    State state(xkb_state_new(map));
    xkb_state_update_mask(state.get(), modifiers, 0, 0, 0, 0, layout);
    return state;
}

} // namespace

// A key with a level on which it makes the symbol.
struct KeyboardMap::Candidate {
    xkb_keycode_t code = 0;
    quint8 modifiers = 0; // those of the level
    bool isOnKeypad = false;
};

KeyboardMap::KeyboardMap(xkb_keymap* map)
    : map_(xkb_keymap_ref(map), xkb_keymap_unref)
    , capsLock_(real(XKB_MOD_NAME_CAPS))
    , numLock_(real("NumLock"))
    , scrollLock_(real("ScrollLock")) {}

std::set<KeyChord> KeyboardMap::chordsFor(QKeyCombination keys, quint32 layout) const {
    const Qt::Key key = capital(keys.key());
    const std::optional<quint8> asked = real(keys.keyboardModifiers());
    if (!asked || key == Qt::Key_unknown || key == 0)
        return {};
    const bool asksKeypad = keys.keyboardModifiers().testFlag(Qt::KeypadModifier);
    const auto keepOnly = [](QList<Candidate>& all, const auto& isGood) {
        if (std::any_of(all.cbegin(), all.cend(), isGood))
            all.removeIf([&isGood](const Candidate& each) { return !isGood(each); });
    };

    const quint32 layouts = xkb_keymap_num_layouts(map_.get());
    QList<Candidate> found;
    quint32 from = layout;
    for (quint32 tried = 0; found.isEmpty() && tried <= layouts; ++tried) {
        from = tried == 0 ? layout : tried - 1;
        found = candidates(key, from);
        if (asksKeypad)
            found.removeIf([](const Candidate& each) { return !each.isOnKeypad; });
    }
    keepOnly(found, [asksKeypad](const Candidate& each) { return each.isOnKeypad == asksKeypad; });
    // Whoever asks for Shift and a symbol that one key makes with Shift and another one without means the first. Other
    // modifiers are no part of a symbol, even where a key has another one with them, as Print has with Alt.
    const auto withSymbol = static_cast<quint8>(*asked & (real(XKB_MOD_NAME_SHIFT) | real(levelThree)));
    keepOnly(found, [&](const Candidate& each) { return isExact(each, key, withSymbol, from); });

    std::set<KeyChord> chords;
    for (const Candidate& each : found) {
        const auto needed = static_cast<quint8>(*asked | each.modifiers);
        const unsigned locks = (capsLock_ | numLock_ | scrollLock_) & ~unsigned(needed);
        // Every subset of the locks.
        for (unsigned some = locks;; some = (some - 1) & locks) {
            chords.insert({static_cast<quint8>(each.code), static_cast<quint8>(needed | some)});
            if (some == 0)
                break;
        }
    }
    return chords;
}

// The real modifiers that a modifier of the configuration stands for. 0 when it stands for none.
quint8 KeyboardMap::real(const char* modifier) const {
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(map_.get(), modifier);
    if (index == XKB_MOD_INVALID)
        return 0;
    const State state = stateWith(map_.get(), xkb_mod_mask_t(1) << index, 0);
    return static_cast<quint8>(xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_EFFECTIVE) & realModifiers);
}

// Nothing when this keyboard has not got all of them.
std::optional<quint8> KeyboardMap::real(Qt::KeyboardModifiers modifiers) const {
    quint8 all = 0;
    for (const ModifierName& each : modifierNames) {
        if (!modifiers.testFlag(each.modifier))
            continue;
        const quint8 bits = real(each.name);
        if (bits == 0)
            return std::nullopt;
        all |= bits;
    }
    return all;
}

QList<KeyboardMap::Candidate> KeyboardMap::candidates(Qt::Key key, quint32 layout) const {
    QList<Candidate> found;
    const xkb_keycode_t last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(map_.get()), 0xff);
    for (xkb_keycode_t code = xkb_keymap_min_keycode(map_.get()); code <= last; ++code) {
        const xkb_level_index_t levels = xkb_keymap_num_levels_for_key(map_.get(), code, layout);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* symbols = nullptr;
            const int count = xkb_keymap_key_get_syms_by_level(map_.get(), code, layout, level, &symbols);
            if (count != 1 || keyOfSymbol(*symbols) != key)
                continue;
            if (const auto modifiers = modifiersOfLevel(code, layout, level)) {
                found.append({code, *modifiers, isOnKeypad(*symbols)});
                break; // the same symbol again, with more modifiers
            }
        }
    }
    return found;
}

// The fewest that reach it. The number pad's lock counts as none: its keys are the same with it and without. Nothing
// when only a lock reaches the level.
std::optional<quint8> KeyboardMap::modifiersOfLevel(xkb_keycode_t code, quint32 layout, quint32 level) const {
    std::array<xkb_mod_mask_t, 64> masks{};
    const size_t count = xkb_keymap_key_get_mods_for_level(map_.get(), code, layout, level, masks.data(), masks.size());
    std::optional<quint8> fewest;
    for (size_t i = 0; i < count; ++i) {
        const auto modifiers = static_cast<quint8>(masks.at(i) & realModifiers & ~xkb_mod_mask_t(numLock_));
        const bool needsLock = (modifiers & (capsLock_ | scrollLock_)) != 0;
        if (!needsLock && (!fewest || std::popcount(modifiers) < std::popcount(*fewest)))
            fewest = modifiers;
    }
    return fewest;
}

// Whether the key makes the symbol also with what is pressed besides.
bool KeyboardMap::isExact(const Candidate& candidate, Qt::Key key, quint8 modifiers, quint32 layout) const {
    const State state = stateWith(map_.get(), xkb_mod_mask_t(modifiers) | candidate.modifiers, layout);
    return keyOfSymbol(xkb_state_key_get_one_sym(state.get(), candidate.code)) == key;
}

} // namespace quenby
