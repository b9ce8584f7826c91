// The setting "launchAtLogin" and the desktop's switch: either follows the other, and neither fights.
#include "app/preferences/LoginItemSwitch.h"
#include "core/DefaultsKeys.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeLoginItem.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

class tst_loginitemswitch : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void begins_data() {
        QTest::addColumn<bool>("isFirst");
        QTest::addColumn<bool>("setting");
        QTest::addColumn<bool>("desktop");
        QTest::addColumn<bool>("after");
        QTest::newRow("the first time") << true << false << false << false;
        QTest::newRow("the first time, with an old entry") << true << false << true << false;
        QTest::newRow("both off") << false << false << false << false;
        QTest::newRow("both on") << false << true << true << true;
        QTest::newRow("switched off at the desktop") << false << true << false << false;
        QTest::newRow("switched on at the desktop") << false << false << true << true;
    }
    void begins() {
        QFETCH(bool, isFirst);
        QFETCH(bool, setting);
        QFETCH(bool, desktop);
        FakeDefaults defaults;
        defaults.setValueForKey(defaultsKey::launchAtLogin, setting);
        FakeLoginItem item;
        item.switchByDesktop(desktop);
        LoginItemSwitch loginSwitch(item, defaults);
        loginSwitch.begin(isFirst);
        QTEST(item.isEnabled(), "after");
        QTEST(defaults.boolForKey(defaultsKey::launchAtLogin), "after");
        QCOMPARE(item.writes(), isFirst ? 1 : 0);
        QCOMPARE(item.followed(), isFirst ? 0 : 1);
    }

    void followsTheSettingWhoeverWritesIt() {
        FakeDefaults defaults;
        FakeLoginItem item;
        LoginItemSwitch loginSwitch(item, defaults);
        defaults.setValueForKey(defaultsKey::launchAtLogin, true); // the first values are being written
        QCOMPARE(item.writes(), 0);
        defaults.setValueForKey(defaultsKey::launchAtLogin, false);
        loginSwitch.begin(false);
        defaults.setValueForKey(defaultsKey::screenshotShare, true);
        QVERIFY(!item.isEnabled());
        for (const char* on : {"yes", "true", "1"}) {
            defaults.setValueForKey(defaultsKey::launchAtLogin, QString::fromLatin1(on));
            QVERIFY(item.isEnabled());
            defaults.setValueForKey(defaultsKey::launchAtLogin, QStringLiteral("what is no boolean"));
            QVERIFY(!item.isEnabled());
        }
    }

    void followsTheDesktopWithoutWritingThere() {
        FakeDefaults defaults;
        FakeLoginItem item;
        LoginItemSwitch loginSwitch(item, defaults);
        loginSwitch.begin(true);
        const int writes = item.writes();
        for (const bool isEnabled : {true, false, true}) {
            item.switchByDesktop(isEnabled);
            QCOMPARE(defaults.boolForKey(defaultsKey::launchAtLogin), isEnabled);
            QCOMPARE(item.isEnabled(), isEnabled);
        }
        QCOMPARE(item.writes(), writes);
        defaults.setValueForKey(defaultsKey::launchAtLogin, false); // and follows the setting as before
        QVERIFY(!item.isEnabled());
    }

    void tellsFailuresAndKeepsTheSetting_data() {
        QTest::addColumn<bool>("isEnabled");
        QTest::addColumn<QString>("text");
        QTest::newRow("on") << true << QStringLiteral("Error in setting at start at login");
        QTest::newRow("off") << false << QStringLiteral("Error in removing at start at login");
    }
    void tellsFailuresAndKeepsTheSetting() {
        QFETCH(bool, isEnabled);
        QFETCH(QString, text);
        FakeDefaults defaults;
        defaults.setValueForKey(defaultsKey::launchAtLogin, !isEnabled);
        FakeLoginItem item;
        item.switchByDesktop(!isEnabled);
        LoginItemSwitch loginSwitch(item, defaults);
        loginSwitch.begin(false);
        QSignalSpy failed(&loginSwitch, &LoginItemSwitch::failed);
        item.failure = Error(errorDomain::posix, EACCES, {{errorKey::reason, QStringLiteral("No room.")}});
        defaults.setValueForKey(defaultsKey::launchAtLogin, isEnabled);
        QCOMPARE(failed, QList<QVariantList>({{text, QStringLiteral("No room.")}}));
        QCOMPARE(defaults.boolForKey(defaultsKey::launchAtLogin), isEnabled);
        QCOMPARE(item.isEnabled(), !isEnabled);
    }
};

QTEST_GUILESS_MAIN(tst_loginitemswitch)
#include "tst_loginitemswitch.moc"
