// Global shortcuts from the desktop's portal, which is played here on the real bus.
#include "platform/linux/shortcuts/PortalShortcuts.h"
#include "platform/linux/shortcuts/PortalTrigger.h"
#include "tests/platform/contracts/GlobalShortcutsContract.h"
#include "tests/platform/shortcuts/FakeShortcutsPortal.h"

#include <QSignalSpy>
#include <QTest>

#include <xkbcommon/xkbcommon.h>

#include <memory>

using namespace quenby;
using namespace quenby::testing;
using Does = FakePortal::Does;
using Tells = FakeShortcutsPortal::Tells;

namespace {

constexpr int patience = 20'000; // ms
const QString identifier = QStringLiteral("show");
const QString trigger = QStringLiteral("CTRL+ALT+q");

QKeySequence keysNamed(const char* name) { return QKeySequence(QString::fromLatin1(name), QKeySequence::PortableText); }
QString reasonOf(const MaybeError& trouble) {
    return trouble ? trouble->detail(errorKey::reason).toString() : QString();
}

// Binds Ctrl+Alt+Q, and remembers what was told.
struct Binding {
    PortalShortcuts shortcuts;
    QList<MaybeError> outcomes;
    QSignalSpy activated{&shortcuts, &GlobalShortcuts::activated};
    QList<MaybeError> changes;

    explicit Binding(const QDBusConnection& bus = QDBusConnection::sessionBus())
        : shortcuts(bus) {
        QObject::connect(&shortcuts, &GlobalShortcuts::changed, &shortcuts,
                         [this](const QString& changed, const MaybeError& trouble) {
                             if (changed == identifier)
                                 changes << trouble;
                         });
        bind("Ctrl+Alt+Q");
    }
    void bind(const char* keys) {
        shortcuts.bind({identifier, QStringLiteral("Show the window"), keysNamed(keys)}, &shortcuts,
                       [this](const MaybeError& trouble) { outcomes << trouble; });
    }
    bool hasOutcome() const { return !outcomes.isEmpty(); }
    bool isBound() const { return hasOutcome() && !outcomes.last(); }
};

// Words of the sentence that people read.
void saysWhy(const MaybeError& trouble, const char* words) {
    const QString reason = reasonOf(trouble);
    QVERIFY2(reason.startsWith(QLatin1String("The shortcut does not work, because")) &&
                 reason.contains(QLatin1String(words)) && !reason.contains(QLatin1String("screen")),
             qPrintable(reason));
}

} // namespace

class tst_PortalShortcuts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { qunsetenv("XDG_ACTIVATION_TOKEN"); }

    void triggers_data() {
        QTest::addColumn<QKeySequence>("keys");
        QTest::addColumn<QString>("words");
        const auto row = [](const char* keys, const char* words) {
            QTest::newRow(keys) << keysNamed(keys) << QString::fromLatin1(words);
        };
        row("", "");
        row("Ctrl+Alt+Q", "CTRL+ALT+q");
        row("Meta+Shift+F12", "SHIFT+LOGO+F12");
        row("F35", "F35");
        row("Ctrl+1, Ctrl+2", "CTRL+1");
        row("Ctrl++", "CTRL+plus");
        row("Ctrl+,", "CTRL+comma");
        row("Alt+Space", "ALT+space");
        row("Ctrl+Return", "CTRL+Return");
        row("Ctrl+Del", "CTRL+Delete");
        row("Ctrl+Home", "CTRL+Home");
        row("Ctrl+PgDown", "CTRL+Next");
        row("Shift+Backtab", "SHIFT+Tab");
        row("Print", "Print");
        row("Num+1", "KP_1");
        row("Num+Enter", "KP_Enter");
        row("Ctrl+Enter", "CTRL+KP_Enter");
        row("Volume Up", "XF86AudioRaiseVolume");
        QTest::newRow("umlaut") << QKeySequence(Qt::CTRL | Qt::Key_Udiaeresis) << QStringLiteral("CTRL+udiaeresis");
        QTest::newRow("Cyrillic") << QKeySequence(Qt::CTRL | Qt::Key(0x042F)) << QStringLiteral("CTRL+Cyrillic_ya");
        QTest::newRow("no key of a keyboard") << QKeySequence(Qt::CTRL | Qt::Key_unknown) << QString();
    }
    void triggers() {
        QFETCH(QKeySequence, keys);
        const QString words = portalTrigger(keys);
        QTEST(words, "words");
        const QByteArray name = words.mid(words.lastIndexOf(QLatin1Char('+')) + 1).toLatin1();
        QVERIFY(words.isEmpty() || xkb_keysym_from_name(name.constData(), XKB_KEYSYM_NO_FLAGS) != XKB_KEY_NoSymbol);
    }

    void theContract() {
        FakeShortcutsPortal fake;
        PortalShortcuts shortcuts(QDBusConnection::sessionBus());
        const QMap<QString, QString> words{{QStringLiteral("Ctrl+Alt+Q"), QStringLiteral("CTRL+ALT+q")},
                                           {QStringLiteral("Meta+F9"), QStringLiteral("LOGO+F9")},
                                           {QStringLiteral("Ctrl+Shift+Space"), QStringLiteral("CTRL+SHIFT+space")}};
        globalShortcutsKeepTheirContract(shortcuts,
                                         {[&](const QString& keys) { fake.press(words[keys]); },
                                          [&](const QString& keys) { fake.taken << words[keys]; }},
                                         words.keys());
    }

    void whatTheDesktopIsAskedAndTells_data() {
        QTest::addColumn<int>("tells");
        QTest::addColumn<QString>("keys");
        const QString keys = QStringLiteral("Super and Q");
        QTest::newRow("at once") << static_cast<int>(Tells::atOnce) << keys;
        QTest::newRow("when it is asked for a list") << static_cast<int>(Tells::whenListed) << keys;
        QTest::newRow("nothing") << static_cast<int>(Tells::never) << QString();
    }
    void whatTheDesktopIsAskedAndTells() {
        FakeShortcutsPortal fake;
        QFETCH(int, tells);
        fake.tells = static_cast<Tells>(tells);
        if (fake.tells == Tells::never)
            fake.does[QStringLiteral("ListShortcuts")] = Does::fail;
        Binding binding;
        QVERIFY(!binding.hasOutcome());
        QTRY_VERIFY_WITH_TIMEOUT(binding.isBound(), patience);
        const QVariantMap asked = fake.properties(identifier);
        QCOMPARE(asked[QStringLiteral("description")].toString(), QStringLiteral("Show the window"));
        QCOMPARE(asked[QStringLiteral("preferred_trigger")].toString(), trigger);
        QTEST(binding.shortcuts.keysChosenByDesktop(identifier), "keys");
        QVERIFY(binding.changes.isEmpty());

        fake.chooseKeys(QStringLiteral("Print"));
        QTRY_COMPARE_WITH_TIMEOUT(binding.changes.size(), 1, patience);
        QVERIFY(!binding.changes.last());
        QCOMPARE(binding.shortcuts.keysChosenByDesktop(identifier), QStringLiteral("Print"));
        binding.shortcuts.unbind(identifier);
        QCOMPARE(binding.shortcuts.keysChosenByDesktop(identifier), QString());
        QTRY_COMPARE_WITH_TIMEOUT(fake.closed, QStringList{fake.session.path()}, patience);
    }

    // The window that is to come to the front may do so only with what the desktop gave.
    void whatComesWithAPress() {
        FakeShortcutsPortal fake;
        Binding binding;
        QByteArray token;
        connect(&binding.shortcuts, &GlobalShortcuts::activated, this,
                [&token] { token = qgetenv("XDG_ACTIVATION_TOKEN"); });
        QTRY_VERIFY_WITH_TIMEOUT(binding.isBound(), patience);
        QVERIFY(fake.press(trigger, {{QStringLiteral("activation_token"), QStringLiteral("a token")}}));
        QTRY_COMPARE_WITH_TIMEOUT(binding.activated.size(), 1, patience);
        QCOMPARE(token, QByteArray("a token"));

        // Held, with what some desktops tell meanwhile. The last one comes after a release that was never told.
        const qulonglong start = 100'000;
        for (const qulonglong time : {start, start + 600, start + 630, start + 660, start + 5000})
            QVERIFY(fake.hold(trigger, time));
        QVERIFY(fake.press(trigger));
        QTRY_COMPARE_WITH_TIMEOUT(binding.activated.size(), 4, patience);
        QVERIFY(fake.press(trigger));
        QTRY_COMPARE_WITH_TIMEOUT(binding.activated.size(), 5, patience);
    }

    void notBound_data() {
        QTest::addColumn<QString>("method");
        QTest::addColumn<int>("does");
        QTest::addColumn<QByteArray>("words");
        const auto row = [](const char* method, Does does, const char* words) {
            QTest::addRow("%s %d", method, static_cast<int>(does))
                << QString::fromLatin1(method) << static_cast<int>(does) << QByteArray(words);
        };
        row("CreateSession", Does::refuse, "refused");
        row("CreateSession", Does::fail, "it is broken");
        row("BindShortcuts", Does::decline, "not allowed");
        row("BindShortcuts", Does::refuse, "refused");
        row("BindShortcuts", Does::fail, "it is broken");
        row("of several", Does::grant, "not allowed");
    }
    void notBound() {
        QFETCH(QString, method);
        QFETCH(int, does);
        QFETCH(QByteArray, words);
        FakeShortcutsPortal fake;
        fake.does[method] = static_cast<Does>(does);
        fake.userAgrees = false; // to this one
        const Binding binding;
        QTRY_VERIFY_WITH_TIMEOUT(binding.hasOutcome(), patience);
        saysWhy(binding.outcomes.last(), words.constData());
        if (method != QLatin1String("CreateSession"))
            QTRY_COMPARE_WITH_TIMEOUT(fake.closed, QStringList{fake.session.path()}, patience);
        QCOMPARE(binding.outcomes.size(), 1);
        QVERIFY(binding.changes.isEmpty());
    }

    void whatIsMissing() {
        Binding withoutPortal;
        Binding withoutBus(QDBusConnection(QStringLiteral("a bus that is not there")));
        QVERIFY(!withoutBus.shortcuts.unavailableBecause().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(withoutPortal.hasOutcome() && withoutBus.hasOutcome(), patience);
        saysWhy(withoutPortal.outcomes.last(), "hands out global shortcuts. Install xdg-desktop-portal");
        saysWhy(withoutBus.outcomes.last(), "D-Bus");
        {
            FakeShortcutsPortal fake;
            fake.interfaces.remove(FakeShortcutsPortal::interface);
            // The first one tries again as soon as there is a portal.
            QTRY_COMPARE_WITH_TIMEOUT(withoutPortal.changes.size(), 1, patience);
            saysWhy(withoutPortal.changes.last(), "does not hand out global shortcuts");
        }
        FakeShortcutsPortal fake;
        QTRY_COMPARE_WITH_TIMEOUT(withoutPortal.changes.size(), 2, patience);
        QVERIFY(!withoutPortal.changes.last());
        QVERIFY(fake.press(trigger));
        QTRY_COMPARE_WITH_TIMEOUT(withoutPortal.activated.size(), 1, patience);
    }

    void thePortalRestarts_data() {
        QTest::addColumn<QString>("during");
        for (const char* during : {"CreateSession", "BindShortcuts", ""})
            QTest::newRow(during) << QString::fromLatin1(during);
    }
    void thePortalRestarts() {
        QFETCH(QString, during);
        auto fake = std::make_unique<FakeShortcutsPortal>();
        if (!during.isEmpty())
            fake->does[during] = Does::wait;
        Binding binding;
        QTRY_VERIFY_WITH_TIMEOUT(during.isEmpty() ? binding.isBound() : fake->options.contains(during), patience);
        fake.reset();
        const auto& told = during.isEmpty() ? binding.changes : binding.outcomes;
        QTRY_VERIFY_WITH_TIMEOUT(!told.isEmpty(), patience);
        saysWhy(told.last(), "the desktop's portal ended");
        QCOMPARE(binding.shortcuts.keysChosenByDesktop(identifier), QString());

        fake = std::make_unique<FakeShortcutsPortal>();
        QTRY_VERIFY_WITH_TIMEOUT(!binding.changes.isEmpty() && !binding.changes.last(), patience);
        QVERIFY(fake->press(trigger));
        QTRY_COMPARE_WITH_TIMEOUT(binding.activated.size(), 1, patience);
        QCOMPARE(binding.outcomes.size(), 1);
        // Who gave it back is not bound again.
        binding.shortcuts.unbind(identifier);
        const qsizetype changes = binding.changes.size();
        fake.reset();
        fake = std::make_unique<FakeShortcutsPortal>();
        const Binding next;
        QTRY_VERIFY_WITH_TIMEOUT(next.isBound(), patience);
        QCOMPARE(fake->binds(), 1);
        QCOMPARE(binding.changes.size(), changes);
    }

    // Nobody is asked by themselves what they have declined; they are when they bind it again.
    void whoDeclinedIsNotAskedAgain() {
        auto fake = std::make_unique<FakeShortcutsPortal>();
        fake->taken << trigger;
        Binding binding;
        QTRY_VERIFY_WITH_TIMEOUT(binding.hasOutcome(), patience);
        fake.reset();
        fake = std::make_unique<FakeShortcutsPortal>();
        {
            const Binding next;
            QTRY_VERIFY_WITH_TIMEOUT(next.isBound(), patience);
            QCOMPARE(fake->binds(), 1);
        }
        binding.bind("Ctrl+Alt+Q");
        QTRY_VERIFY_WITH_TIMEOUT(binding.isBound(), patience);
    }

    void theDesktopTakesItBack() {
        FakeShortcutsPortal fake;
        Binding binding;
        QTRY_VERIFY_WITH_TIMEOUT(binding.isBound(), patience);
        fake.endSession();
        QTRY_COMPARE_WITH_TIMEOUT(binding.changes.size(), 1, patience);
        saysWhy(binding.changes.last(), "taken it back");
        binding.bind("Ctrl+Alt+Q");
        QTRY_COMPARE_WITH_TIMEOUT(binding.outcomes.size(), 2, patience);
        QVERIFY(binding.isBound());
    }

    // Whatever is under way is taken back at once, and nothing of it is heard any more.
    void whoGivesUpTakesTheQuestionBack_data() {
        QTest::addColumn<QString>("how");
        for (const char* how : {"unbound", "bound to other keys", "destroyed"})
            QTest::newRow(how) << QString::fromLatin1(how);
    }
    void whoGivesUpTakesTheQuestionBack() {
        QFETCH(QString, how);
        FakeShortcutsPortal fake;
        fake.does[QStringLiteral("BindShortcuts")] = Does::wait;
        auto binding = std::make_unique<Binding>();
        QTRY_VERIFY_WITH_TIMEOUT(fake.options.contains(QStringLiteral("BindShortcuts")), patience);
        const QStringList questions{fake.waitingHandle(), fake.session.path()};
        fake.does.clear();
        if (how == QLatin1String("unbound"))
            binding->shortcuts.unbind(identifier);
        else if (how == QLatin1String("destroyed"))
            binding.reset();
        else
            binding->bind("Meta+F9");
        QTRY_COMPARE_WITH_TIMEOUT(fake.closed, questions, patience);
        const Binding next; // with its answer, a late one would have arrived
        QTRY_VERIFY_WITH_TIMEOUT(next.isBound(), patience);
        if (how == QLatin1String("bound to other keys"))
            QTRY_VERIFY_WITH_TIMEOUT(binding->isBound(), patience);
        QCOMPARE(binding ? binding->outcomes.size() : 0, how == QLatin1String("bound to other keys") ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(tst_PortalShortcuts)
#include "tst_PortalShortcuts.moc"
