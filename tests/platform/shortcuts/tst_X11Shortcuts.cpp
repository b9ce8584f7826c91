// Global shortcuts on a real X server: keys that are really pressed, while another program's window has the keyboard.
#include "platform/linux/shortcuts/DesktopShortcuts.h"
#include "platform/linux/shortcuts/ServerKeyboard.h"
#include "platform/linux/shortcuts/X11Shortcuts.h"
#include "platform/linux/x11/XDisplay.h"
#include "tests/desktop/support/DesktopInput.h"
#include "tests/platform/contracts/GlobalShortcutsContract.h"
#include "tests/platform/fakes/FakeGlobalShortcuts.h"
#include "tests/platform/shortcuts/Typist.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QKeyEvent>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

// A window of another program: it writes down which keys arrive.
class OtherProgram {
public:
    OtherProgram() {
        process_.start(QStringLiteral("stdbuf"),
                       {QStringLiteral("-oL"), QStringLiteral("xev"), QStringLiteral("-event"),
                        QStringLiteral("keyboard"), QStringLiteral("-name"), QStringLiteral("Other program")});
        window_ = input_.waitForWindow(QStringLiteral("Other program"));
    }
    ~OtherProgram() {
        process_.kill();
        process_.waitForFinished();
    }
    bool takeFocus() { return window_ != 0 && input_.activate(window_); }
    // The symbols of the keys pressed there so far, such as "u", without the modifiers'.
    QStringList keys() {
        output_ += process_.readAllStandardOutput();
        QStringList keys;
        for (const QString& event : QString::fromUtf8(output_).split(QStringLiteral("\n\n"))) {
            static const QRegularExpression symbol(QStringLiteral("KeyPress event.*keysym 0x[0-9a-f]+, (\\w+)\\)"),
                                                   QRegularExpression::DotMatchesEverythingOption);
            const QString key = symbol.match(event).captured(1);
            if (!key.isEmpty() && !key.contains(QLatin1Char('_')))
                keys.append(key);
        }
        return keys;
    }

private:
    DesktopInput input_;
    QProcess process_;
    QByteArray output_;
    WindowId window_ = 0;
};

// Presses that the server told, repetitions included.
class Presses final : public QAbstractNativeEventFilter {
public:
    Presses() { qApp->installNativeEventFilter(this); }
    ~Presses() override { qApp->removeNativeEventFilter(this); }
    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
        const auto* event = static_cast<const xcb_key_press_event_t*>(message);
        if (event->response_type == XCB_KEY_PRESS) {
            ++count;
            lastTime = event->time;
        }
        return false;
    }
    int count = 0;
    quint32 lastTime = 0;
};

// The last time that somebody used it, as the window manager is told.
quint32 userTime(const QWidget& window) {
    const XDisplay display = *XDisplay::ofApplication();
    const CAllocated<xcb_get_property_reply_t> property(
        xcb_get_property_reply(display.connection,
                               xcb_get_property(display.connection, false, static_cast<xcb_window_t>(window.winId()),
                                                display.atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 0, 1),
                               nullptr));
    return property && xcb_get_property_value_length(property.get()) == 4
               ? *static_cast<const quint32*>(xcb_get_property_value(property.get()))
               : 0;
}

// The codes and keys that arrive in a window of the toolkit's.
class KeyWindow final : public QWidget {
public:
    QList<std::pair<quint32, QKeyCombination>> pressed;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        pressed.append({event->nativeScanCode(),
                        QKeyCombination(event->modifiers() & Qt::KeypadModifier, static_cast<Qt::Key>(event->key()))});
    }
    bool focusNextPrevChild(bool) override { return false; }
};

} // namespace

class tst_X11Shortcuts : public QObject {
    Q_OBJECT

    // Shortcuts, what they told, and somebody who types. One shortcut more, on a key that is at the same place in every
    // layout, tells when all that came before it was dealt with.
    struct Stage {
        Stage() { bind(QStringLiteral("sentinel"), QStringLiteral("F12")); }
        // Empty when the keys work.
        QString bind(const QString& identifier, const QString& keys) {
            std::optional<QString> reason;
            shortcuts.bind({identifier, {}, QKeySequence(keys, QKeySequence::PortableText)}, &shortcuts,
                           [&reason](const MaybeError& trouble) {
                               reason = trouble ? trouble->detail(errorKey::reason).toString() : QString();
                           });
            return QTest::qWaitFor([&reason] { return reason.has_value(); }, patience) ? *reason : QStringLiteral("?");
        }
        void settle() {
            const auto before = count(QStringLiteral("sentinel"));
            typist.type({place::f12});
            QVERIFY(QTest::qWaitFor([&] { return count(QStringLiteral("sentinel")) == before + 1; }, patience));
        }
        qsizetype count(const QString& identifier) const {
            return std::count_if(activated.cbegin(), activated.cend(),
                                 [&](const QVariantList& each) { return each.first() == identifier; });
        }
        // How often the shortcut acts when these keys are typed.
        qsizetype effectOf(const QList<quint8>& keys) {
            const auto before = count(QStringLiteral("keys"));
            typist.type(keys);
            settle();
            return count(QStringLiteral("keys")) - before;
        }
        // What was told of "keys" since the last question: true for trouble.
        QList<bool> troubles() {
            QList<bool> told;
            for (const QVariantList& each : std::exchange(static_cast<QList<QVariantList>&>(changed), {}))
                if (each.first() == QStringLiteral("keys"))
                    told.append(each.at(1).value<MaybeError>().has_value());
            return told;
        }
        // As a settings program does it.
        void configure(const QStringList& arguments) {
            QCOMPARE(QProcess::execute(QStringLiteral("setxkbmap"), arguments), 0);
            settle();
        }
        void switchLayout(quint8 layout) {
            typist.switchLayout(layout);
            settle();
        }

        Typist typist;
        X11Shortcuts shortcuts;
        QSignalSpy activated{&shortcuts, &GlobalShortcuts::activated};
        QSignalSpy changed{&shortcuts, &GlobalShortcuts::changed};
    };

    static inline const QString keys = QStringLiteral("keys");
    static inline const QStringList usualLayout{QStringLiteral("-layout"), QStringLiteral("us"),
                                                QStringLiteral("-option"), QString()};
    static QStringList layouts(const char* names) { return {QStringLiteral("-layout"), QString::fromLatin1(names)}; }

private Q_SLOTS:
    void init() { QCOMPARE(QProcess::execute(QStringLiteral("setxkbmap"), usualLayout), 0); }
    void cleanup() { DesktopInput().savePictureOfFailure(); }

    void shortcutsKeepTheirContract() {
        const QStringList chords{QStringLiteral("Ctrl+Alt+U"), QStringLiteral("Meta+I"),
                                 QStringLiteral("Ctrl+Shift+O")};
        FakeGlobalShortcuts fake;
        globalShortcutsKeepTheirContract(
            fake,
            {[&](const QString& chord) { fake.press(chord); },
             [&](const QString& chord) {
                 fake.taken.insert(chord,
                                   Error(URLErrorCode::unknown, {{errorKey::reason, QStringLiteral("It is taken.")}}));
             }},
            chords);
        const auto real = makeDesktopShortcuts();
        QVERIFY(qobject_cast<X11Shortcuts*>(real.get()));
        Typist typist;
        const QList<QList<quint8>> places{
            {place::ctrl, place::alt, place::u}, {place::super, place::i}, {place::ctrl, place::shift, place::o}};
        globalShortcutsKeepTheirContract(
            *real,
            {[&](const QString& chord) { typist.type(places.at(chords.indexOf(chord))); },
             [&](const QString&) { QVERIFY(typist.grab(place::u, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1)); }},
            chords);
    }

    void keysWorkWhoeverHasTheKeyboard() {
        OtherProgram other;
        QVERIFY(other.takeFocus());
        Stage stage;
        const QList<quint8> chord{place::ctrl, place::alt, place::u};
        QCOMPARE(stage.bind(keys, QStringLiteral("Ctrl+Alt+U")), QString());
        QCOMPARE(stage.effectOf(chord), 1);
        QCOMPARE(stage.effectOf({place::u}), 0);
        QCOMPARE(stage.effectOf({place::ctrl, place::u}), 0);

        // However long they are held, and in whatever order they are let go.
        Presses presses;
        for (const quint8 key : chord)
            stage.typist.press(key);
        QTRY_VERIFY_WITH_TIMEOUT(presses.count >= 4, patience);
        stage.typist.release(place::ctrl);
        stage.typist.press(place::ctrl);
        const int before = presses.count;
        QTRY_VERIFY_WITH_TIMEOUT(presses.count >= before + 3, patience);
        for (const quint8 key : chord)
            stage.typist.release(key);
        stage.settle();
        QCOMPARE(stage.count(keys), 2);

        // The locks make no difference.
        for (const quint8 lock : {place::capsLock, place::numLock, place::capsLock, place::numLock}) {
            stage.typist.type({lock});
            QCOMPARE(stage.effectOf(chord), 1);
        }

        // What was given back reaches the program in front again; nothing else was kept from it, and nothing is stuck.
        stage.shortcuts.unbind(keys);
        QCOMPARE(stage.effectOf(chord), 0);
        stage.typist.type({place::e});
        QTRY_COMPARE_WITH_TIMEOUT(
            other.keys(),
            (QStringList{QStringLiteral("u"), QStringLiteral("u"), QStringLiteral("u"), QStringLiteral("e")}),
            patience);
    }

    // Somebody chose the keys in a window of ours, and does not let go of them at once.
    void keysThatWereDownBeforeDoNotCount() {
        KeyWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window, patience));
        Stage stage;
        stage.typist.press(place::ctrl);
        stage.typist.press(place::u);
        QTRY_VERIFY_WITH_TIMEOUT(!window.pressed.isEmpty() && window.pressed.last().first == place::u, patience);
        QCOMPARE(stage.bind(keys, QStringLiteral("Ctrl+U")), QString());
        Presses presses;
        QTRY_VERIFY_WITH_TIMEOUT(presses.count >= 3, patience);
        stage.typist.release(place::u);
        stage.typist.release(place::ctrl);
        stage.settle();
        QCOMPARE(stage.count(keys), 0);
        QCOMPARE(stage.effectOf({place::ctrl, place::u}), 1);
    }

    // Window managers keep programs from pushing themselves to the front, unless they prove that somebody used them.
    void aWindowMayComeToTheFront() {
        QWidget window;
        OtherProgram other;
        QVERIFY(other.takeFocus());
        Stage stage;
        QCOMPARE(stage.bind(keys, QStringLiteral("Meta+T")), QString());
        Presses presses;
        quint32 pressedAt = 0;
        quint32 usedAt = 0;
        connect(&stage.shortcuts, &GlobalShortcuts::activated, &window, [&](const QString& identifier) {
            if (identifier != keys || window.isVisible())
                return;
            pressedAt = presses.lastTime;
            window.show();
            usedAt = userTime(window);
        });
        stage.typist.press(place::super);
        stage.typist.press(place::t);
        QTRY_VERIFY_WITH_TIMEOUT(usedAt != 0, patience);
        QCOMPARE(usedAt, pressedAt);
        stage.typist.release(place::t);
        stage.typist.release(place::super);
        QTRY_VERIFY_WITH_TIMEOUT(window.isActiveWindow(), patience);
        // There, too, and without reaching it.
        QCOMPARE(stage.effectOf({place::super, place::t}), 1);
    }

    void keysFollowTheLayout() {
        Stage stage;
        stage.configure(layouts("us,de"));
        QCOMPARE(stage.bind(keys, QStringLiteral("Ctrl+Y")), QString());
        const QList<quint8> american{place::ctrl, place::y};
        const QList<quint8> german{place::ctrl, place::z};
        const QString neighbour = QStringLiteral("neighbour");
        QCOMPARE(stage.bind(neighbour, QStringLiteral("Ctrl+Z")), QString());
        QCOMPARE(stage.effectOf(american), 1);
        stage.switchLayout(1); // the two change places
        QCOMPARE(stage.effectOf(american), 0);
        QCOMPARE(stage.effectOf(german), 1);
        QCOMPARE(stage.count(neighbour), 1);
        stage.shortcuts.unbind(neighbour);
        stage.configure(layouts("us,ru"));
        stage.switchLayout(1); // has no such letter
        QCOMPARE(stage.effectOf(american), 1);
        stage.configure(layouts("de"));
        QCOMPARE(stage.effectOf(german), 1);
        // What the Alt key is, is a part of the configuration.
        QCOMPARE(stage.bind(keys, QStringLiteral("Alt+U")), QString());
        stage.configure({QStringLiteral("-option"), QStringLiteral("altwin:swap_alt_win")});
        QCOMPARE(stage.effectOf({place::alt, place::u}), 0);
        QCOMPARE(stage.effectOf({place::super, place::u}), 1);
        QVERIFY(stage.troubles().isEmpty());
    }

    void nothingIsKeptOfWhatAnotherProgramHas() {
        Stage stage;
        Typist other;
        // With Num Lock alone.
        QVERIFY(other.grab(place::u, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_2));
        const QString reason = stage.bind(keys, QStringLiteral("Ctrl+U"));
        QVERIFY2(reason.contains(QStringLiteral("Another program")), qPrintable(reason));
        for (const uint16_t locks : {0, XCB_MOD_MASK_LOCK + 0, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2})
            QVERIFY(other.grab(place::u, static_cast<uint16_t>(XCB_MOD_MASK_CONTROL | locks)));

        // Freed: at the next change of the keyboard they work. Nobody can take them then.
        stage.configure(usualLayout);
        QVERIFY(stage.troubles().isEmpty());
        other.ungrabAll();
        stage.configure(usualLayout);
        QCOMPARE(stage.troubles(), QList<bool>{false});
        QCOMPARE(stage.effectOf({place::ctrl, place::u}), 1);
        QVERIFY(!other.grab(place::u, XCB_MOD_MASK_CONTROL));

        // A layout in which they are another program's, and one that has no such key.
        QCOMPARE(stage.bind(keys, QStringLiteral("Ctrl+Z")), QString());
        QVERIFY(other.grab(place::y, XCB_MOD_MASK_CONTROL));
        stage.configure(layouts("us,de"));
        stage.switchLayout(1);
        QCOMPARE(stage.troubles(), QList<bool>{true});
        stage.switchLayout(0);
        QCOMPARE(stage.troubles(), QList<bool>{false});
        QCOMPARE(stage.effectOf({place::ctrl, place::z}), 1);
        stage.configure(layouts("ru"));
        QCOMPARE(stage.troubles(), QList<bool>{true});
        QVERIFY(stage.bind(keys, QStringLiteral("Ctrl+Z")).startsWith(QStringLiteral("No key of this keyboard")));
        QVERIFY(stage.bind(keys, QStringLiteral("F12")).startsWith(QStringLiteral("This program")));
    }

    void nothingIsLeftBehind() {
        Typist other;
        {
            X11Shortcuts shortcuts;
            shortcuts.bind({keys, {}, QKeySequence(QStringLiteral("Ctrl+U"))}, nullptr, {});
            QVERIFY(!other.grab(place::u, XCB_MOD_MASK_CONTROL));
        }
        QTRY_VERIFY_WITH_TIMEOUT(other.grab(place::u, XCB_MOD_MASK_CONTROL), patience);
    }

    // What somebody presses to choose a shortcut is what is then bound, for every key that there is.
    void theToolkitsKeysAreTheSameKeys() {
        QCOMPARE(QProcess::execute(QStringLiteral("setxkbmap"), layouts("de")), 0);
        KeyWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window, patience));
        Typist typist;
        const std::optional<KeyboardMap> map = ServerKeyboard(XDisplay::ofApplication()->connection).readMap();
        QVERIFY(map);
        for (int code = 9; code < 255; ++code)
            typist.type({static_cast<quint8>(code)});
        typist.type({place::a});
        typist.type({place::a});
        QTRY_VERIFY_WITH_TIMEOUT(window.pressed.size() > 150 && window.pressed.last().first == place::a, patience);
        // Those that stand in no shortcut alone, or that the toolkit has no name for.
        static const QSet<Qt::Key> others{Qt::Key_unknown,     Qt::Key_Shift,   Qt::Key_Control,
                                          Qt::Key_Alt,         Qt::Key_Meta,    Qt::Key_AltGr,
                                          Qt::Key_Mode_switch, Qt::Key_NumLock, Qt::Key_CapsLock};
        QStringList wrong;
        for (const auto& [code, key] : std::as_const(window.pressed)) {
            const std::set<KeyChord> chords = map->chordsFor(key, 0);
            if (key.key() >= Qt::Key_Space && !others.contains(key.key()) &&
                std::none_of(chords.cbegin(), chords.cend(),
                             [&](const KeyChord& each) { return each.code == code && each.modifiers == 0; }))
                wrong.append(QStringLiteral("%1 %2").arg(code).arg(key.key(), 0, 16));
        }
        QCOMPARE(wrong.join(QStringLiteral(", ")), QString());
    }
};

QTEST_MAIN(tst_X11Shortcuts)
#include "tst_X11Shortcuts.moc"
