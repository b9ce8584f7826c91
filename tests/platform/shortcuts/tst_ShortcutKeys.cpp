// Which keys of a keyboard make a shortcut: layouts, levels, modifiers, locks. And when a key counts as pressed.
#include "platform/linux/shortcuts/KeyboardMap.h"
#include "platform/linux/shortcuts/PressedKeys.h"

#include <QKeySequence>
#include <QTest>

using namespace quenby;

namespace {

constexpr quint8 locks = 1 << 1 | 1 << 4; // Caps Lock, and Num Lock as these configurations have it

// "us", "us,de" or "us(intl)"; a word more is an option.
std::shared_ptr<xkb_keymap> mapOf(const QString& names) {
    const QByteArray layouts = names.section(QLatin1Char(' '), 0, 0).toLatin1();
    const QByteArray options = names.section(QLatin1Char(' '), 1).toLatin1();
    const std::shared_ptr<xkb_context> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
    const xkb_rule_names rules{"evdev", "pc105", layouts.constData(), "", options.constData()};
    return {xkb_keymap_new_from_names(context.get(), &rules, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref};
}

// Such as "Control+AC01", by the names that places on a keyboard have; several are separated by a space.
QString inWords(xkb_keymap* map, const std::set<KeyChord>& chords) {
    QStringList words;
    for (const KeyChord& chord : chords) {
        if ((chord.modifiers & locks) != 0)
            continue;
        QString word;
        for (xkb_mod_index_t bit = 0; bit < 8; ++bit)
            if ((chord.modifiers >> bit & 1) != 0)
                word += QString::fromLatin1(xkb_keymap_mod_get_name(map, bit)) + QLatin1Char('+');
        words.append(word + QString::fromLatin1(xkb_keymap_key_get_name(map, chord.code)));
    }
    words.sort();
    return words.join(QLatin1Char(' '));
}

} // namespace

class tst_ShortcutKeys : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keysMakeTheirSymbols_data() {
        QTest::addColumn<QString>("names");
        QTest::addColumn<int>("layout");
        QTest::addColumn<QString>("shortcut");
        QTest::addColumn<QString>("keys");
        const auto row = [](const char* names, int layout, const char* shortcut, const char* keys) {
            QTest::addRow("%s/%d %s", names, layout, shortcut)
                << QString::fromUtf8(names) << layout << QString::fromUtf8(shortcut) << QString::fromUtf8(keys);
        };
        row("us", 0, "Ctrl+Alt+U", "Control+Mod1+AD07");
        row("us", 0, "Meta+Space", "Mod4+SPCE");
        row("us", 0, "Ctrl+Shift+A", "Shift+Control+AC01");
        row("us", 0, "F12", "FK12");
        row("us", 0, "Shift+F5", "Shift+FK05");
        row("us", 0, "Alt+Print", "Mod1+I218 Mod1+PRSC");
        row("us", 0, "Ctrl+Pause", "Control+PAUS");
        row("us", 0, "Volume Mute", "MUTE");
        row("us", 0, "Ctrl+Shift+Backtab", "Shift+Control+TAB");
        row("us", 0, "Ctrl+Return", "Control+RTRN");
        row("us", 0, "Ctrl+Enter", "Control+KPEN");
        // A symbol on a level, with and without the Shift that makes it.
        row("us", 0, "Ctrl+!", "Shift+Control+AE01");
        row("us", 0, "Ctrl+Shift+!", "Shift+Control+AE01");
        row("us", 0, "Ctrl+Shift+1", "Shift+Control+AE01");
        row("us", 0, "Ctrl+<", "Control+LSGT Shift+Control+AB08");
        row("us", 0, "Ctrl+Shift+<", "Shift+Control+AB08");
        // The number pad, whose lock makes no difference, and what only looks like it.
        row("us", 0, "Ctrl+Num+1", "Control+KP1");
        row("us", 0, "Ctrl+1", "Control+AE01");
        row("us", 0, "Ctrl+Num++", "Control+KPAD");
        row("us", 0, "Ctrl++", "Shift+Control+AE12");
        row("us", 0, "Num+Home", "KP7");
        // Letters at other places, on other levels.
        row("de", 0, "Ctrl+Y", "Control+AB01");
        row("de", 0, "Ctrl+\u00d6", "Control+AC10");
        row("de", 0, "Ctrl+@", "Control+Mod5+AD01");
        row("fr", 0, "Ctrl+1", "Shift+Control+AE01");
        row("fr", 0, "Ctrl+&", "Control+AE01 Shift+Control+Mod5+AC08");
        // The layout in use comes first; the others are asked for what it has not.
        row("us,de", 0, "Ctrl+Z", "Control+AB01");
        row("us,de", 1, "Ctrl+Z", "Control+AD06");
        row("us,ru", 1, "Ctrl+A", "Control+AC01");
        row("us,ru", 0, "Ctrl+\u0424", "Control+AC01");
        row("us,ru", 0, "Ctrl+.", "Control+AB09");
        row("us,ru", 1, "Ctrl+.", "Control+AB10");
        row("ru", 0, "Ctrl+\u0424", "Control+AC01");
        row("ru", 0, "Ctrl+A", "");
        row("us", 0, "Ctrl+\u0424", "");
        row("us", 0, "", "");
        // Modifiers are what the configuration makes of them.
        row("us altwin:swap_alt_win", 0, "Meta+A", "Mod4+AC01");
        row("us altwin:menu_win", 0, "Meta+Menu", "");
    }
    void keysMakeTheirSymbols() {
        QFETCH(const QString, names);
        QFETCH(const int, layout);
        QFETCH(const QString, shortcut);
        const std::shared_ptr<xkb_keymap> map = mapOf(names);
        QVERIFY(map);
        const auto sequence = QKeySequence::fromString(shortcut, QKeySequence::PortableText);
        const auto keys = sequence.isEmpty() ? QKeyCombination() : sequence[0];
        QTEST(inWords(map.get(), KeyboardMap(map.get()).chordsFor(keys, static_cast<quint32>(layout))), "keys");
    }

    void modifiersAreNeverAssumed() {
        // The Alt keys are the third modifier here, Num Lock the first.
        const std::shared_ptr<xkb_keymap> usual = mapOf(QStringLiteral("us"));
        const std::unique_ptr<char, decltype(&std::free)> text(
            xkb_keymap_get_as_string(usual.get(), XKB_KEYMAP_FORMAT_TEXT_V1), &std::free);
        QString configuration = QString::fromUtf8(text.get());
        configuration.replace(QStringLiteral("modifier_map Mod1"), QStringLiteral("modifier_map Mod3"));
        configuration.replace(QStringLiteral("modifier_map Mod2"), QStringLiteral("modifier_map Mod1"));
        const std::shared_ptr<xkb_context> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
        const std::shared_ptr<xkb_keymap> map(
            xkb_keymap_new_from_string(context.get(), configuration.toUtf8().constData(), XKB_KEYMAP_FORMAT_TEXT_V1,
                                       XKB_KEYMAP_COMPILE_NO_FLAGS),
            xkb_keymap_unref);
        QVERIFY(map);
        const quint8 alt = 1 << 5;
        const quint8 caps = 1 << 1;
        const quint8 num = 1 << 3;
        std::set<quint8> modifiers;
        for (const KeyChord& chord : KeyboardMap(map.get()).chordsFor(Qt::ALT | Qt::Key_U, 0))
            modifiers.insert(chord.modifiers);
        QCOMPARE(modifiers, (std::set<quint8>{alt, alt | caps, alt | num, alt | caps | num}));
    }

    void aKeyGoesDownOnce() {
        PressedKeys keys;
        QVERIFY(keys.press(30, 1000));
        keys.release(30, 1500);
        QVERIFY(!keys.press(30, 1500)); // a repetition
        QVERIFY(!keys.press(30, 1530)); // a repetition that is told by presses alone
        QVERIFY(keys.press(31, 1540));
        keys.release(30, 1600);
        QVERIFY(keys.press(30, 1601));
    }
};

QTEST_APPLESS_MAIN(tst_ShortcutKeys)
#include "tst_ShortcutKeys.moc"
