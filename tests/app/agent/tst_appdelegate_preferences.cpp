// The composition: what the preferences' settings do, with and without their window.

#include "core/DefaultsKeys.h"
#include "popover/window/PopoverWindow.h"
#include "preferences/account/AccountFace.h"
#include "preferences/account/AccountPane.h"
#include "preferences/account/OwnClientDialog.h"
#include "preferences/window/PreferenceWindow.h"
#include "tests/app/agent/AppDelegateStage.h"
#include "workspace/window/WelcomeView.h"
#include "workspace/window/WorkspaceToolBar.h"

#include <QAction>
#include <QPushButton>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class AppDelegatePreferencesTest : public AppDelegateStage {
    Q_OBJECT

private Q_SLOTS:
    // Only the very first launch switches the login item off; later ones leave it to the user.
    void theFirstLaunchSwitchesTheLoginItemOff() {
        launch();
        QTRY_COMPARE(loginItem_->writes(), 1);
        QVERIFY(!loginItem_->isEnabled());
        defaults_->setValueForKey(defaultsKey::launchAtLogin, true);
        QTRY_VERIFY(loginItem_->isEnabled());
    }

    void laterLaunchesFollowTheProgram() {
        QVERIFY(!loginItem_->setEnabled(true));
        defaults_->setValueForKey(defaultsKey::launchAtLogin, true);
        launch();
        QTRY_COMPARE(loginItem_->followed(), 1);
        QCOMPARE(loginItem_->writes(), 1); // this test's own
        loginItem_->switchByDesktop(false);
        QTRY_VERIFY(!defaults_->boolForKey(defaultsKey::launchAtLogin, true));
    }

    void aLoginItemThatFailsIsTold() {
        launch();
        QTRY_COMPARE(loginItem_->writes(), 1);
        loginItem_->failure = Error(errorDomain::posix, EROFS, {{errorKey::reason, u"the folder is read-only"_s}});
        for (const auto& [isOn, text] : {std::pair{true, u"Error in setting at start at login"_s},
                                         std::pair{false, u"Error in removing at start at login"_s}}) {
            alerts_->forgetShown();
            defaults_->setValueForKey(defaultsKey::launchAtLogin, isOn);
            QTRY_COMPARE(alerts_->shown().size(), 1);
            const Alert& alert = alerts_->shown().first().alert;
            QCOMPARE(alert.messageText, u"Error"_s);
            QCOMPARE(alert.informativeText, text);
            QCOMPARE(alert.buttons, QStringList{u"Ok"_s});
            QCOMPARE(defaults_->boolForKey(defaultsKey::launchAtLogin), isOn);
        }
    }

    // Without a preferences window, and whoever writes the settings.
    void theShortcutBringsTheWorkspaceToTheFront() {
        defaults_->setValueForKey(defaultsKey::customShortcut, u"Ctrl+Alt+J"_s);
        defaults_->setValueForKey(defaultsKey::customShortcutEnabled, true);
        launch();
        QTRY_VERIFY(window()->isVisible());
        window()->hide();
        QTRY_VERIFY(shortcuts_->press(u"Ctrl+Alt+J"_s));
        QTRY_VERIFY(window()->isVisible());
        defaults_->setValueForKey(defaultsKey::customShortcut, u"Meta+K"_s);
        QTRY_VERIFY(shortcuts_->press(u"Meta+K"_s));
        QVERIFY(!shortcuts_->press(u"Ctrl+Alt+J"_s));
        defaults_->setValueForKey(defaultsKey::customShortcutEnabled, false);
        QVERIFY(!shortcuts_->press(u"Meta+K"_s)); // at once
        defaults_->setValueForKey(defaultsKey::customShortcutEnabled, u"perhaps"_s);
        QVERIFY(!shortcuts_->press(u"Meta+K"_s));
    }

    void everyOpeningMakesAFreshWindow() {
        launch();
        openPreferences();
        const QPointer<PreferenceWindow> first = preferences();
        QVERIFY(first && first->isVisible());
        QVERIFY(showsIn(*first, u"No User Login"_s));
        openPreferences();
        QTRY_VERIFY(!first);
        QVERIFY(preferences()->isVisible());
    }

    void theAccountPaneFollowsTheAccount() {
        signIn();
        openPreferences();
        QTRY_VERIFY_WITH_TIMEOUT(showsIn(*preferences(), owner), patiently);
        // Signing out closes the window before it asks or does anything.
        auto* button = preferences()->findChild<AccountPane*>()->findChild<QPushButton*>(u"logoutButton"_s);
        QVERIFY(button);
        button->click();
        QVERIFY(!preferences() || !preferences()->isVisible());
        QTRY_VERIFY(!delegate_->isSignedIn());
    }

    // Somebody looks all the time, so the picture of whoever signs in next comes by itself.
    void thePictureFollowsTheAccountInAnOpenWindow() {
        launch();
        openPreferences();
        auto* face = preferences()->findChild<AccountFace*>();
        const auto look = [face] { return face->grab().toImage(); };
        const QImage nobody = look();
        const auto signInAgain = [&] {
            QTRY_VERIFY_WITH_TIMEOUT(visibleSheet(), patiently);
            keep(keptGrant(*local_, owner));
            delegate_->loginAccess();
            QTRY_VERIFY_WITH_TIMEOUT(look() != nobody, patiently);
        };
        signInAgain();
        const QImage robin = look();
        delegate_->logoutUser();
        QVERIFY(look() == nobody);
        signInAgain();
        QVERIFY(look() == robin);
    }

    // Who is signed in goes on as the former client, or ends and signs in as the other one.
    void anotherClient_data() {
        QTest::addColumn<int>("answer"); // -1: nothing is asked
        QTest::newRow("nothing to lose") << -1;
        QTest::newRow("all the same") << 0;
        QTest::newRow("rather not") << 1;
    }
    void anotherClient() {
        QFETCH(int, answer);
        playProvider();
        QVERIFY(local_->orderFaults(R"([{"match":{"pathPrefix":"/upload","times":1000},"action":{"status":503}}])"));
        signIn();
        if (answer >= 0)
            delegate_->application_openFiles({makeFile("under way")});
        defaults_->setValueForKey(defaultsKey::clientSecret, u"hush"_s);
        defaults_->setValueForKey(defaultsKey::clientID, u"other"_s);
        if (answer >= 0) {
            QTRY_COMPARE(alerts_->waiting(), 1);
            QCOMPARE(drive_->identity(), grantedClient());
            alerts_->answer(answer);
        }
        if (answer == 1) {
            QTRY_COMPARE(defaults_->valueForKey(defaultsKey::clientID).toString(), grantedClient().clientID);
            QCOMPARE(defaults_->valueForKey(defaultsKey::clientSecret).toString(), grantedClient().clientSecret);
            QTest::qWait(0); // what follows from that
            QVERIFY(delegate_->isSignedIn() && alerts_->waiting() == 0);
            QCOMPARE(drive_->identity(), grantedClient());
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(!delegate_->isSignedIn() && shows(u"your client other"_s), patiently);
        QCOMPARE(drive_->identity().clientID, u"other"_s);
    }

    // Nothing begins by itself where something is to be chosen first; what has begun begins anew with it.
    void choicesBeforeASignIn() {
        playProvider();
        launch();
        const auto& view = window()->welcomeView();
        QTRY_VERIFY(view.isVisible() && button(view, u"Sign In"_s)->isEnabled());
        QTest::qWait(0);
        QVERIFY(!visibleSheet());
        button(view, u"Only files that Quenby uploads"_s)->click();
        QCOMPARE(defaults_->valueForKey(defaultsKey::driveAccess).toString(), u"files"_s);
        QCOMPARE(drive_->makeAuthentication()->scope(), drive_->endpoints().driveFileScope);
        button(view, u"Sign In"_s)->click();
        QTRY_VERIFY(visibleSheet());
        const QPointer<GTMOAuth2Window> first = visibleSheet();
        defaults_->removeValueForKey(defaultsKey::driveAccess); // by another program
        QTRY_VERIFY(!first && visibleSheet());
        QVERIFY(button(view, u"Everything in the Drive"_s)->isChecked());
        visibleSheet()->reject();
        button(view, u"Use Your Own Client…"_s)->click();
        auto* dialog = window()->findChild<OwnClientDialog*>();
        QVERIFY(dialog && dialog->isVisible() && dialog->windowModality() == Qt::WindowModal);
        Q_EMIT window()->welcomeView().ownClientRequested();
        QCOMPARE(window()->findChildren<OwnClientDialog*>().size(), 1);
    }

    void theAccountPaneTellsTheAccess() {
        playProvider();
        signIn();
        openPreferences();
        QTRY_VERIFY_WITH_TIMEOUT(showsIn(*preferences(), u"Access: everything"_s), patiently);
        button(*preferences(), u"Sign In Again…"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(!delegate_->isSignedIn(), patiently);
        QTRY_VERIFY(button(window()->welcomeView(), u"Everything in the Drive"_s)->isVisible());
    }

    // What only people can put right is told to them; the rest is tried again.
    void aDriveThatIsSwitchedOffIsTold() {
        keep(keptGrant(*local_, owner));
        QVERIFY(local_->orderFaults(R"([{"match":{"pathPrefix":"/rpc","times":1000},"action":{"status":403,
            "body":{"error":{"code":403,"message":"Off.","data":[{"reason":"accessNotConfigured"}]}}}}])"));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT((time_->advance(1s), shows(u"enable the Google Drive API"_s)), patiently);
        local_->clearFaults();
        QTRY_VERIFY_WITH_TIMEOUT((time_->advance(1min), shows(u"% of"_s)), patiently);
    }

    // The program's windows are not in its own screenshots.
    void capturesMinimiseTheWindow() {
        signIn();
        openPreferences();
        choose(u"Capture & Upload Screenshot"_s);
        QVERIFY(preferences()->isMinimized());
    }

    void theItemsPlaceAndLookFollowTheSettings() {
        signIn();
        choose(u"Show Changes"_s);
        QTRY_VERIFY(popover() && popover()->isVisible());
        const QSize before = hosts_->fake()->face()->size();
        defaults_->setValueForKey(defaultsKey::showUsegeText, true);
        QVERIFY(!popover()->isVisible());
        QTRY_VERIFY(hosts_->fake()->face()->size() != before);
    }

private:
    void openPreferences() {
        QTRY_VERIFY(window()->isVisible());
        window()->toolBar().action(ToolBarCommand::preferences)->trigger();
    }
    void signIn() {
        keep(keptGrant(*local_, owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face() && true, patiently);
    }
    static QAbstractButton* button(const QWidget& view, const QString& text) {
        for (auto* candidate : view.findChildren<QAbstractButton*>()) {
            if (candidate->text().remove(u'&') == text)
                return candidate;
        }
        qFatal("no button %s", qPrintable(text));
    }
    static PreferenceWindow* preferences() { return topLevel<PreferenceWindow>(); }
    static bool showsIn(const QWidget& window, const QString& text) {
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->text().contains(text))
                return true;
        }
        return false;
    }
};

QTEST_MAIN(AppDelegatePreferencesTest)
#include "tst_appdelegate_preferences.moc"
