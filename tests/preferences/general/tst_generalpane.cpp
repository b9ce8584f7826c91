// The general pane: every control is its setting, both ways and whatever a settings file holds.
#include "core/DefaultsKeys.h"
#include "core/FolderBookmark.h"
#include "preferences/general/GeneralPane.h"
#include "preferences/general/NoticeLine.h"
#include "preferences/general/ScreenshotFolder.h"
#include "preferences/general/SettingCheckBox.h"
#include "preferences/general/SettingComboBox.h"
#include "preferences/shortcut/CustomShortcut.h"
#include "preferences/shortcut/ShortcutRecorder.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeGlobalShortcuts.h"
#include "widgets/ElidedLabel.h"

#include <QAccessible>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <stdexcept>

using namespace quenby;
using namespace quenby::testing;

namespace {

struct Stage {
    explicit Stage(const QString& noShortcuts = {}, const QString& placeDecided = {})
        : pane(std::make_unique<GeneralPane>(
              GeneralPane::Services{defaults, shortcut, folder, noShortcuts, placeDecided})) {}

    template <typename Widget>
    Widget* find(const QString& text) {
        for (auto* widget : pane->findChildren<Widget*>()) {
            // A combo box gives its value for its name, and leaves the rest to its caption.
            if (QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name) == text ||
                widget->accessibleName() == text)
                return widget;
        }
        return nullptr;
    }
    template <typename Widget>
    Widget* named(const QString& text) {
        Widget* widget = find<Widget>(text);
        return widget ? widget : throw std::runtime_error("there is no " + text.toStdString());
    }
    SettingCheckBox* box(const QString& text) { return named<SettingCheckBox>(text); }
    ShortcutRecorder* recorder() { return pane->findChild<ShortcutRecorder*>(); }
    bool tells(const QString& words) {
        const auto lines = pane->findChildren<NoticeLine*>();
        return std::any_of(lines.begin(), lines.end(),
                           [&](NoticeLine* line) { return !line->isHidden() && line->text().contains(words); });
    }

    FakeDefaults defaults;
    FakeFilePanels panels;
    FakeGlobalShortcuts shortcuts;
    CustomShortcut shortcut{shortcuts, defaults};
    ScreenshotFolder folder{defaults, panels};
    std::unique_ptr<GeneralPane> pane;
};

const QString icon = QStringLiteral("Show the icon");
const QString upload = QStringLiteral("Upload new screenshots automatically");
const QString showWith = QStringLiteral("Show the window with");
const QString place = QStringLiteral("Place of the status item");
const QString truth = QStringLiteral("true");
const QString untruth = QStringLiteral("false");

} // namespace

class tst_generalpane : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void boxes_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("absent");
        QTest::newRow("showMenubarIcon") << icon << false;
        QTest::newRow("showUsegeText") << QStringLiteral("Show the storage use") << false;
        QTest::newRow("notificationDisplay") << QStringLiteral("Notify of changes in the Drive and of uploads") << true;
        QTest::newRow("launchAtLogin") << QStringLiteral("Start at login") << false;
        QTest::newRow("screenshotShare") << upload << false;
        QTest::newRow("captureToLink") << QStringLiteral("Copy the link of captures") << true;
        QTest::newRow("uploadsRestOnMetered") << QStringLiteral("Pause uploads on metered connections") << true;
        QTest::newRow("customShortcutEnabled") << showWith << false;
    }
    void boxes() {
        QFETCH(QString, text);
        QFETCH(bool, absent);
        const QString key = QString::fromLatin1(QTest::currentDataTag());
        Stage stage;
        SettingCheckBox* box = stage.box(text);
        QCOMPARE(box->isChecked(), absent);
        QVERIFY(!stage.defaults.contains(key)); // to look is not to write

        for (const bool isOn : {!absent, absent, !absent}) {
            box->click();
            QCOMPARE(stage.defaults.valueForKey(key), QVariant(isOn ? truth : untruth));
        }
        for (const QVariant& rubbish : {QVariant(QStringLiteral("perhaps")), QVariant(QVariantMap{{truth, truth}})}) {
            stage.defaults.setValueForKey(key, !absent);
            QCOMPARE(box->isChecked(), !absent);
            stage.defaults.setValueForKey(key, rubbish);
            QCOMPARE(box->isChecked(), absent);
            QCOMPARE(stage.defaults.valueForKey(key), rubbish);
        }
        box->toggle(); // as an assistive program does it
        QCOMPARE(stage.defaults.boolForKey(key, absent), !absent);
    }

    void choices_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("values");
        QTest::newRow("statusItemPlace") << place << QStringList{QStringLiteral("tray"), QStringLiteral("strip")};
        QTest::newRow("proxy") << QStringLiteral("Proxy") << QStringList{QStringLiteral("none")};
    }
    void choices() {
        QFETCH(QString, name);
        QFETCH(QStringList, values);
        const QString key = QString::fromLatin1(QTest::currentDataTag());
        Stage stage;
        auto* choice = stage.named<SettingComboBox>(name);
        QCOMPARE(choice->currentIndex(), 0);
        for (const QString& value : values) {
            QTest::keyClick(choice, Qt::Key_Down);
            QCOMPARE(stage.defaults.valueForKey(key), QVariant(value));
        }
        QTest::keyClick(choice, Qt::Key_Home);
        QVERIFY(!stage.defaults.contains(key));

        const QVariant rubbish[] = {QStringLiteral("elsewhere"), QStringList{values.first()}, QString()};
        for (const QVariant& value : rubbish) {
            stage.defaults.setValueForKey(key, values.first());
            QCOMPARE(choice->currentIndex(), 1);
            stage.defaults.setValueForKey(key, value);
            QCOMPARE(choice->currentIndex(), 0);
            QCOMPARE(stage.defaults.valueForKey(key), value); // nobody chose anything
        }
    }

    void whatCannotBeChosenIsTold() {
        const QString decided = QStringLiteral("Decided by <b>somebody</b>.");
        const QString none = QStringLiteral("This desktop has none.");
        Stage stage(none, decided);
        const auto* choice = stage.named<SettingComboBox>(place);
        QVERIFY(!choice->isEnabled() && choice->toolTip().contains(decided.toHtmlEscaped()));
        QCOMPARE(choice->accessibleDescription(), decided);
        QVERIFY(stage.tells(none));
        QVERIFY(!stage.box(showWith)->isEnabled() && !stage.recorder()->isEnabled());

        const QString hint = QStringLiteral("empty place");
        QVERIFY(stage.tells(hint));
        stage.box(icon)->click();
        QVERIFY(!stage.tells(hint));
        stage.defaults.setValueForKey(defaultsKey::showMenubarIcon, false);
        QVERIFY(stage.tells(hint));
    }

    void screenshots() {
        Stage stage;
        QTemporaryDir home;
        const QByteArray path = QFile::encodeName(home.path());
        SettingCheckBox* box = stage.box(upload);

        box->click();
        QCOMPARE(stage.panels.opened().last().window.data(), stage.pane->window());
        QVERIFY(stage.panels.cancel());
        QTRY_VERIFY(!box->isChecked());
        QVERIFY(!stage.defaults.boolForKey(defaultsKey::screenshotShare, true));

        box->click();
        QVERIFY(stage.panels.choose({path}));
        QTRY_VERIFY(stage.find<ElidedLabel>(home.path()));
        QVERIFY(box->isChecked() && !stage.tells(home.path()));

        // The folder goes while nobody looks; a look back tells it, as long as it matters.
        QVERIFY(home.remove());
        QEvent back(QEvent::WindowActivate);
        QCoreApplication::sendEvent(stage.pane.get(), &back);
        QTRY_VERIFY(stage.tells(home.path()));
        box->click();
        QTRY_VERIFY(!stage.tells(home.path()));

        stage.named<QPushButton>(QStringLiteral("Choose…"))->click();
        QCOMPARE(stage.panels.waiting(), 1);
        QSignalSpy requested(stage.pane.get(), &GeneralPane::screenshotFoldersRequested);
        stage.named<QPushButton>(QStringLiteral("Folders…"))->click();
        QCOMPARE(requested.count(), 1);
    }

    void shortcut() {
        Stage stage;
        const QString keys = QStringLiteral("Ctrl+Alt+Q");
        stage.defaults.setValueForKey(defaultsKey::customShortcut, keys);
        QVERIFY(!stage.recorder()->isEnabled() && !stage.shortcuts.press(keys));
        stage.box(showWith)->click();
        QVERIFY(stage.recorder()->isEnabled() && stage.shortcuts.press(keys));

        const QString refusal = QStringLiteral("Not this one.");
        Q_EMIT stage.recorder()->refused(refusal);
        QVERIFY(stage.tells(refusal));
        Q_EMIT stage.recorder()->refused({});
        QVERIFY(!stage.tells(refusal));

        const QString taken = QStringLiteral("Ctrl+Alt+W");
        const QString held = QStringLiteral("Held.");
        stage.shortcuts.taken.insert(taken, Error(errorDomain::posix, EBUSY, {{errorKey::reason, held}}));
        stage.defaults.setValueForKey(defaultsKey::customShortcut, taken);
        QTRY_VERIFY(stage.tells(held));
        stage.box(showWith)->click();
        QVERIFY(!stage.tells(held) && !stage.recorder()->isEnabled());

        stage.shortcuts.chosenByDesktop = QStringLiteral("Press <Super>k");
        stage.defaults.setValueForKey(defaultsKey::customShortcut, keys);
        stage.box(showWith)->click();
        QTRY_VERIFY(stage.tells(stage.shortcuts.chosenByDesktop));
    }

    // The present keys can be pressed in order to record them; afterwards they act again, however it ended.
    void recording() {
        Stage stage;
        const QString keys = QStringLiteral("Ctrl+Alt+Q");
        stage.defaults.setValueForKey(defaultsKey::customShortcut, keys);
        stage.box(showWith)->click();
        Q_EMIT stage.recorder()->recordingBegan();
        QVERIFY(!stage.shortcuts.press(keys));
        Q_EMIT stage.recorder()->recordingEnded();
        QVERIFY(stage.shortcuts.press(keys));
        Q_EMIT stage.recorder()->recordingBegan();
        stage.pane.reset();
        QVERIFY(stage.shortcuts.press(keys));
    }
};

QTEST_MAIN(tst_generalpane)
#include "tst_generalpane.moc"
