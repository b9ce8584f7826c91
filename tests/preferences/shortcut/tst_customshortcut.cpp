// From the settings to the keys: who writes them makes no difference, and what the desktop answers late does not count.
#include "core/DefaultsKeys.h"
#include "preferences/shortcut/CustomShortcut.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeGlobalShortcuts.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString keysQ = QStringLiteral("Ctrl+Alt+Q");
const QString keysW = QStringLiteral("Ctrl+Alt+W");

Error heldByAnother() { return Error(errorDomain::posix, EBUSY, {{errorKey::reason, QStringLiteral("Held.")}}); }

} // namespace

class tst_customshortcut : public QObject {
    Q_OBJECT

    std::unique_ptr<FakeGlobalShortcuts> shortcuts_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<CustomShortcut> shortcut_;

    MaybeError trouble() const { return shortcut_->binder().trouble(defaultsKey::customShortcut); }

private Q_SLOTS:
    void init() {
        shortcut_.reset();
        shortcuts_ = std::make_unique<FakeGlobalShortcuts>();
        defaults_ = std::make_unique<FakeDefaults>();
        defaults_->setValueForKey(defaultsKey::customShortcut, keysQ);
        defaults_->setValueForKey(defaultsKey::customShortcutEnabled, true);
        shortcut_ = std::make_unique<CustomShortcut>(*shortcuts_, *defaults_);
        shortcut_->resetShortcutRegistration();
    }
    void cleanupTestCase() { shortcut_.reset(); }

    void theKeysActAsTheSettingsSayWhoeverWritesThem() {
        const QSignalSpy shown(shortcut_.get(), &CustomShortcut::ShowMainWindow);
        QVERIFY(shortcuts_->press(keysQ));
        QCOMPARE(shown.size(), 1);
        QVERIFY(!shortcuts_->bound().first().description.isEmpty());

        shortcut_->setShortcutEnabled(false);
        QVERIFY(!shortcuts_->press(keysQ));
        QCOMPARE(defaults_->valueForKey(defaultsKey::customShortcutEnabled).toString(), QStringLiteral("false"));
        const int binds = shortcuts_->binds();
        shortcut_->setShortcutEnabled(true);
        QCOMPARE(shortcuts_->binds(), binds + 1); // some desktops ask their users each time
        QVERIFY(shortcuts_->press(keysQ));
        QCOMPARE(shown.size(), 2);

        defaults_->setValueForKey(defaultsKey::customShortcutEnabled, false);
        QVERIFY(!shortcuts_->press(keysQ));
        defaults_->setValueForKey(defaultsKey::customShortcut, keysW);
        QVERIFY(shortcuts_->bound().isEmpty());
        defaults_->setValueForKey(defaultsKey::customShortcutEnabled, true);
        QVERIFY(shortcuts_->press(keysW));
        QVERIFY(!shortcuts_->press(keysQ));
        defaults_->setValueForKey(defaultsKey::customShortcut, 12);
        QVERIFY(shortcuts_->bound().isEmpty());
        defaults_->setValueForKey(defaultsKey::customShortcut, keysQ);
        QVERIFY(shortcuts_->press(keysQ));
        QCOMPARE(shown.size(), 4);

        shortcut_.reset();
        QVERIFY(shortcuts_->bound().isEmpty());
    }

    void whileOthersAreChosenThePresentKeysDoNothing() {
        shortcut_->binder().setSuspended(true);
        QVERIFY(!shortcuts_->press(keysQ));
        defaults_->setValueForKey(defaultsKey::customShortcut, keysW);
        QVERIFY(shortcuts_->bound().isEmpty());
        shortcut_->binder().setSuspended(false);
        QVERIFY(shortcuts_->press(keysW));
    }

    void troubleIsThatOfThePresentKeys() {
        shortcuts_->taken.insert(keysW, heldByAnother());
        const QSignalSpy changes(shortcut_.get(), &CustomShortcut::stateChanged);
        defaults_->setValueForKey(defaultsKey::customShortcut, keysW);
        QTRY_VERIFY(trouble());
        QCOMPARE(trouble()->detail(errorKey::reason).toString(), QStringLiteral("Held."));
        QVERIFY(!changes.isEmpty());

        // The answer about W is on its way when Q takes its place: it must not be taken for Q's.
        defaults_->setValueForKey(defaultsKey::customShortcut, keysQ);
        QVERIFY(!trouble());
        defaults_->setValueForKey(defaultsKey::customShortcut, keysW);
        defaults_->setValueForKey(defaultsKey::customShortcut, keysQ);
        QCoreApplication::processEvents();
        QVERIFY(!trouble());

        // The desktop changes its mind, also before its answer has arrived.
        shortcut_->resetShortcutRegistration();
        Q_EMIT shortcuts_->changed(defaultsKey::customShortcut, heldByAnother());
        QCoreApplication::processEvents();
        QVERIFY(trouble());
        Q_EMIT shortcuts_->changed(defaultsKey::customShortcut, std::nullopt);
        QVERIFY(!trouble());
        Q_EMIT shortcuts_->changed(QStringLiteral("somebodyElses"), heldByAnother());
        QVERIFY(!trouble());
        Q_EMIT shortcuts_->changed(defaultsKey::customShortcut, heldByAnother());
        shortcut_->setShortcutEnabled(false);
        QVERIFY(!trouble());
    }

    void anActionMayEndItsOwnBinding() {
        connect(shortcut_.get(), &CustomShortcut::ShowMainWindow, this,
                [this] { shortcut_->setShortcutEnabled(false); });
        QVERIFY(shortcuts_->press(keysQ));
        QVERIFY(!shortcuts_->press(keysQ));
    }
};

QTEST_GUILESS_MAIN(tst_customshortcut)
#include "tst_customshortcut.moc"
