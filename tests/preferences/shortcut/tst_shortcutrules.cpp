// Which keys may be a global shortcut, and what is read from settings that anybody may have written.
#include "preferences/shortcut/PressedKeys.h"
#include "preferences/shortcut/ShortcutRules.h"

#include <QKeyEvent>
#include <QTest>

using namespace quenby;

namespace {

QString refusal(const char* keys) {
    return refusalOfShortcut(QKeySequence::fromString(QString::fromUtf8(keys), QKeySequence::PortableText)[0]);
}

QString stored(const QVariant& value) { return storedShortcut(value).toString(QKeySequence::PortableText); }

} // namespace

class tst_shortcutrules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keysThatNobodyNeedsAreAccepted() {
        for (const char* keys :
             {"Ctrl+Alt+Q", "Meta+Space", "Alt+Shift+K", "Ctrl+Shift+C", "Ctrl+!", "F1", "Shift+F9", "Print",
              "Media Play", "Volume Up", "Pause", "Ctrl+Alt+Escape", "Ctrl+Num+5", "Ctrl+Ы"})
            QVERIFY2(refusal(keys).isEmpty(), keys);
    }

    // Each sentence names the keys that it is about.
    void keysThatPeopleNeedAreRefused() {
        for (const char* keys :
             {"A",           "Shift+A", "Space",        "Left",     "Shift+Insert", "Return",        "Escape",
              "Tab",         "Ctrl+C",  "Ctrl+Shift+Z", "Alt+F4",   "Alt+Tab",      "Alt+Shift+Tab", "Ctrl+Alt+Del",
              "Ctrl+Alt+F2", "Ctrl+Q",  "F5",           "Ctrl+Tab", "Num+5",        "Ctrl+Num+0"}) {
            const QString sentence = refusal(keys);
            QVERIFY2(!sentence.isEmpty(), keys);
            QVERIFY2(sentence.contains(QKeySequence(QLatin1String(keys)).toString(QKeySequence::NativeText)), keys);
        }
        for (const QKeyCombination nameless :
             {QKeyCombination(Qt::ControlModifier, Qt::Key_unknown),
              QKeyCombination(Qt::ControlModifier, Qt::Key_Shift),
              QKeyCombination(Qt::ControlModifier, Qt::Key_Super_L), QKeyCombination::fromCombined(0)})
            QVERIFY(!refusalOfShortcut(nameless).isEmpty());
    }

    // Ctrl with the key of C copies in a Cyrillic layout, too.
    void anotherLayoutsCopyIsRefusedAsWell() {
        constexpr quint32 keyOfC = 54;
        constexpr quint32 keyOfB = 56;
        constexpr int es = 0x421; // Cyrillic letters
        constexpr int i = 0x418;
        const QKeyEvent copies(QEvent::KeyPress, es, Qt::ControlModifier, keyOfC, 0, 0);
        QCOMPARE(chordOf(copies), QKeyCombination(Qt::ControlModifier, Qt::Key(es)));
        QVERIFY(!refusalOfShortcut(chordOf(copies), latinKeyOf(copies)).isEmpty());
        const QKeyEvent free(QEvent::KeyPress, i, Qt::ControlModifier, keyOfB, 0, 0);
        QCOMPARE(latinKeyOf(free), Qt::Key_B);
        QVERIFY(refusalOfShortcut(chordOf(free), latinKeyOf(free)).isEmpty());
        // Where a Latin letter stands, it alone counts: C lies where X does in another order of letters.
        const QKeyEvent latin(QEvent::KeyPress, Qt::Key_J, Qt::ControlModifier, keyOfC, 0, 0);
        QCOMPARE(latinKeyOf(latin), Qt::Key_unknown);
    }

    void shiftCountsOnlyWhereItMadeNoSymbol() {
        const auto chord = [](int key, Qt::KeyboardModifiers modifiers) {
            return QKeySequence(chordOf(QKeyEvent(QEvent::KeyPress, key, modifiers)))
                .toString(QKeySequence::PortableText);
        };
        constexpr Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::ShiftModifier;
        QCOMPARE(chord(Qt::Key_Exclam, both), QStringLiteral("Ctrl+!"));
        QCOMPARE(chord(Qt::Key_K, both), QStringLiteral("Ctrl+Shift+K"));
        QCOMPARE(chord(Qt::Key_F2, both), QStringLiteral("Ctrl+Shift+F2"));
        QCOMPARE(chord(Qt::Key_Space, both), QStringLiteral("Ctrl+Shift+Space"));
        QCOMPARE(chord(Qt::Key_Backtab, both), QStringLiteral("Ctrl+Shift+Tab"));
    }

    void onlyAUsableFirstChordIsRead() {
        QCOMPARE(stored(QStringLiteral("Ctrl+Alt+Q")), QStringLiteral("Ctrl+Alt+Q"));
        QCOMPARE(stored(QStringLiteral("Ctrl+K, Ctrl+J")), QStringLiteral("Ctrl+K"));
        // As a settings file that was written by hand gives them.
        QCOMPARE(stored(QStringList{QStringLiteral("Ctrl+K"), QStringLiteral("Ctrl+J")}), QStringLiteral("Ctrl+K"));
        QCOMPARE(stored(QStringList{QStringLiteral("Ctrl+"), QString()}), QStringLiteral("Ctrl+,"));
        for (const QVariant& useless :
             {QVariant(), QVariant(QString()), QVariant(QStringLiteral("Ctrl+Nonsense")), QVariant(QStringLiteral("Q")),
              QVariant(QStringLiteral("Ctrl+C")), QVariant(12), QVariant(QVariantMap()), QVariant(QStringLiteral("+"))})
            QVERIFY2(stored(useless).isEmpty(), qPrintable(useless.toString()));
        const QKeySequence keys(Qt::META | Qt::Key_Comma);
        QCOMPARE(storedShortcut(storedForm(keys)), keys);
    }
};

QTEST_APPLESS_MAIN(tst_shortcutrules)
#include "tst_shortcutrules.moc"
