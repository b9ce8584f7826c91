// What the menus offer to whom, and that every command can be reached by the keyboard.

#include "app/statusitem/StatusMenus.h"
#include "tests/app/statusitem/FakeStatusItemInputs.h"
#include "tests/platform/fakes/FakeDefaults.h"

#include <QRegularExpression>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

QStringList texts(const QMenu& menu) {
    QStringList found;
    for (const QAction* action : menu.actions()) {
        if (action->isVisible() && !action->isSeparator())
            found += action->text().remove(QRegularExpression(QStringLiteral("&(?!&)")));
    }
    return found;
}

QMenu* submenu(const QMenu& menu) {
    for (const QAction* action : menu.actions()) {
        if (QMenu* found = action->menu())
            return found;
    }
    return nullptr;
}

} // namespace

class StatusMenusTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void quotaLine_data() {
        QTest::addColumn<bool>("signedIn");
        QTest::addColumn<bool>("complete");
        QTest::addColumn<QString>("line");
        QTest::newRow("complete") << true << true << QStringLiteral("37% of 15 GB used");
        QTest::newRow("on its way") << true << false << QStringLiteral("Fetching...");
        QTest::newRow("signed out") << false << true << QStringLiteral("Data not available");
    }
    void quotaLine() {
        QFETCH(bool, signedIn);
        QFETCH(bool, complete);
        QFETCH(QString, line);
        StatusMenus menus(inputs_, defaults_);
        inputs_.signedIn = signedIn;
        if (!complete)
            inputs_.summary = {};
        Q_EMIT menus.statusMenu().aboutToShow();
        QVERIFY2(texts(menus.statusMenu()).contains(line),
                 qPrintable(texts(menus.statusMenu()).join(QLatin1Char('|'))));
        inputs_ = {};
    }

    void signedOut() {
        StatusMenus menus(inputs_, defaults_);
        menus.enable(MenuCommand::captureAndUploadScreenshot, true);
        menus.enable(MenuCommand::preferences, true);
        const auto isEnabled = [&menus](MenuCommand command) { return menus.action(command)->isEnabled(); };
        const MenuCommand needAccount[] = {MenuCommand::uploadFile, MenuCommand::uploadAndShareFile,
                                           MenuCommand::captureAndUploadScreenshot};
        for (const bool signedIn : {true, false, true}) {
            inputs_.signedIn = signedIn;
            Q_EMIT menus.addFileMenu().aboutToShow();
            for (const MenuCommand command : needAccount)
                QCOMPARE(isEnabled(command), signedIn);
            QVERIFY(isEnabled(MenuCommand::showQuenby) && isEnabled(MenuCommand::quit));
            QVERIFY(isEnabled(MenuCommand::preferences));
            QCOMPARE(menus.action(MenuCommand::signOut)->isVisible(), signedIn);
            QCOMPARE(menus.action(MenuCommand::signIn)->isVisible(), !signedIn);
        }
        inputs_ = {};
    }

    void commandsThatNobodyCarriesOutAreDisabled() {
        StatusMenus menus(inputs_, defaults_);
        for (const MenuCommand command : {MenuCommand::showChanges, MenuCommand::uploadClipboard,
                                          MenuCommand::recordScreen, MenuCommand::preferences}) {
            QVERIFY(!menus.action(command)->isEnabled());
            menus.enable(command, true);
            QVERIFY(menus.action(command)->isEnabled());
            menus.enable(command, false);
            Q_EMIT menus.statusMenu().aboutToShow();
            QVERIFY(!menus.action(command)->isEnabled());
        }
    }

    void triggered() {
        StatusMenus menus(inputs_, defaults_);
        QList<MenuCommand> commands;
        connect(&menus, &StatusMenus::triggered, this, [&commands](MenuCommand command) { commands.append(command); });
        menus.action(MenuCommand::uploadAndShareFile)->trigger();
        menus.action(MenuCommand::recordScreen)->trigger(); // disabled
        menus.action(MenuCommand::quit)->trigger();
        QCOMPARE(commands, (QList<MenuCommand>{MenuCommand::uploadAndShareFile, MenuCommand::quit}));
    }

    void theFirstEntryOpensThePopover() {
        StatusMenus menus(inputs_, defaults_);
        QCOMPARE(menus.statusMenu().actions().constFirst(), menus.action(MenuCommand::showChanges));
    }

    void switchesAreTheSettings() {
        defaults_.setValueForKey(QStringLiteral("showMenubarIcon"), true);
        StatusMenus menus(inputs_, defaults_);
        const QList<QAction*> switches = submenu(menus.statusMenu())->actions();
        QCOMPARE(switches.size(), 2);
        QVERIFY(switches[0]->isChecked() && !switches[1]->isChecked());
        switches[1]->trigger();
        QVERIFY(defaults_.boolForKey(QStringLiteral("showUsegeText")));
        defaults_.setValueForKey(QStringLiteral("showMenubarIcon"), false);
        QVERIFY(!switches[0]->isChecked());
    }

    // What is seen together must not share a mnemonic, and everything that can be chosen has one.
    void mnemonics() {
        StatusMenus menus(inputs_, defaults_);
        for (const bool signedIn : {true, false}) {
            inputs_.signedIn = signedIn;
            menus.refresh();
            for (const QMenu* menu : {&menus.statusMenu(), &menus.addFileMenu(), submenu(menus.statusMenu())}) {
                QSet<QString> seen;
                for (const QAction* action : menu->actions()) {
                    const QString key = QKeySequence::mnemonic(action->text()).toString();
                    if (!action->isVisible() || action->isSeparator() || !action->text().contains(QLatin1Char('&')))
                        continue;
                    QVERIFY2(!key.isEmpty() && !seen.contains(key), qPrintable(action->text()));
                    seen.insert(key);
                }
                QVERIFY(seen.size() >= 2);
            }
        }
        inputs_ = {};
    }

private:
    FakeStatusItemInputs inputs_;
    FakeDefaults defaults_;
};

QTEST_MAIN(StatusMenusTest)
#include "tst_statusmenus.moc"
