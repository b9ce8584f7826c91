// The keyboard as its configuration has it: which keys make a chord.
//
// A key's code is a place on the keyboard. The modifiers are the eight real ones of the X protocol, whose meaning is
// part of the configuration. Threads: any; nothing is asked of the server.
#pragma once

#include <QKeyCombination>
#include <QList>

#include <compare>
#include <memory>
#include <optional>
#include <set>

#include <xkbcommon/xkbcommon.h>

namespace quenby {

struct KeyChord {
    quint8 code = 0;
    quint8 modifiers = 0;

    auto operator<=>(const KeyChord&) const = default;
};

class KeyboardMap {
public:
    // Shares the map with whoever else has it.
    explicit KeyboardMap(xkb_keymap* map);

    // The keys that make the chord in this layout, or, when it has none, in the first other one that has. A symbol that
    // needs modifiers of its own, such as Shift, brings them. Each comes with every combination of the locks, which are
    // to make no difference. Empty when no key makes it.
    std::set<KeyChord> chordsFor(QKeyCombination keys, quint32 layout) const;

private:
    struct Candidate;
    quint8 real(const char* modifier) const;
    std::optional<quint8> real(Qt::KeyboardModifiers modifiers) const;
    QList<Candidate> candidates(Qt::Key key, quint32 layout) const;
    std::optional<quint8> modifiersOfLevel(xkb_keycode_t code, quint32 layout, quint32 level) const;
    bool isExact(const Candidate& candidate, Qt::Key key, quint8 modifiers, quint32 layout) const;

    std::shared_ptr<xkb_keymap> map_;
    quint8 capsLock_;
    quint8 numLock_;
    quint8 scrollLock_;
};

} // namespace quenby
