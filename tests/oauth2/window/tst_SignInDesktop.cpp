// The whole sign-in as a user has it: the local Drive's page in the real engine, its button pressed, the sign-in in a
// real keyring, found again by the next start, and gone after the sign-out. With the variable QUENBY_PICTURES set to a
// folder, the window leaves a picture there.

#include "oauth2/NetworkInformationReachability.h"
#include "oauth2/window/GTMOAuth2WindowController.h"
#include "oauth2/window/GTMOAuth2WindowUi.h"
#include "oauth2/window/KeychainPersistence.h"
#include "platform/linux/session/IniDefaults.h"
#include "platform/linux/session/SecretServiceKeyring.h"
#include "platform/linux/web/PluginWebViews.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/support/LocalDriveProcess.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

class TestSignInDesktop : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void signInIsKeptAndForgotten();

private:
    // Presses the page's main button until the window has gone: there is one page, or two.
    void pressThroughThePages(GTMOAuth2WindowController& controller);
    void takePicture();

    static constexpr int patience = 60000; // milliseconds
    LocalDriveProcess drive_;
    QTemporaryDir folder_;
};

void TestSignInDesktop::takePicture() {
    const QString folder = qEnvironmentVariable("QUENBY_PICTURES");
    if (folder.isEmpty())
        return;
    QTest::qWait(1000); // until it has been drawn; nothing but the picture depends on it
    QProcess::execute(u"import"_s, {u"-window"_s, u"root"_s, folder + u"/sign-in.png"_s});
}

void TestSignInDesktop::pressThroughThePages(GTMOAuth2WindowController& controller) {
    const QString button = u"document.querySelector('button.primary')"_s;
    bool isThere = false;
    QTRY_VERIFY_WITH_TIMEOUT((controller.webView()->evaluate(button + u" !== null"_s, this,
                                                             [&](const QVariant& found) { isThere = found.toBool(); }),
                              isThere),
                             patience);
    QTRY_VERIFY_WITH_TIMEOUT(!controller.webView()->isLoading(), patience);
    QVERIFY(QTest::qWaitForWindowExposed(controller.window()));
    takePicture();
    QTRY_VERIFY_WITH_TIMEOUT(
        !controller.webView() || !controller.isWindowShown() ||
            (controller.webView()->evaluate(button + u".click()"_s, this, [](const QVariant&) {}), false),
        patience);
}

void TestSignInDesktop::signInIsKeptAndForgotten() {
    QVERIFY2(drive_.start(), drive_.log().constData());
    const Endpoints endpoints = Endpoints::localDrive(drive_.url());
    const auto time = makeSystemTimeSource();
    SecretServiceKeyring keyring;
    IniDefaults defaults(folder_.filePath(u"settings.ini"_s));
    KeychainPersistence keychain(keyring, defaults, endpoints, time);
    PluginWebViewsPlaces places = PluginWebViewsPlaces::standard(u"test"_s);
    places.dataRoot = folder_.filePath(u"data"_s);
    places.cacheRoot = folder_.filePath(u"cache"_s);
    PluginWebViews webViews(places);
    FakeOpener opener;
    const SignInWindowServices services{
        webViews, keychain, opener, {endpoints, time, std::make_shared<NetworkInformationReachability>()}, u"me"_s};

    std::optional<MaybeError> outcome;
    auto controller = GTMOAuth2WindowController::controllerWithScope(endpoints.driveScope, u"client"_s, u"secret"_s,
                                                                     endpoints.keychainItemName, services);
    controller->signInSheetModalForWindow(nullptr, this,
                                          [&](const auto&, const MaybeError& error) { outcome = error; });
    pressThroughThePages(*controller);
    QTRY_VERIFY_WITH_TIMEOUT(outcome, patience);
    QVERIFY2(!*outcome, qPrintable((*outcome)->description()));
    const QString email = controller->authentication()->userEmail();
    QVERIFY(email.contains(QLatin1Char('@')));
    controller.reset();
    QTRY_VERIFY_WITH_TIMEOUT(defaults.boolForKey(KeychainPersistence::prefsKeyForName(endpoints.keychainItemName)),
                             patience);

    const auto restore = [&](QString* restoredEmail) {
        std::optional<KeychainRead> read;
        keychain.authForGoogleFromKeychainForName(endpoints.keychainItemName, u"client"_s, u"secret"_s, this,
                                                  [&](const auto& auth, KeychainRead outcomeOfRead, const MaybeError&) {
                                                      *restoredEmail = auth->userEmail();
                                                      read = outcomeOfRead;
                                                  });
        return QTest::qWaitFor([&] { return read.has_value(); }, patience) ? read : std::nullopt;
    };
    QString restoredEmail;
    QCOMPARE(restore(&restoredEmail), std::optional(KeychainRead::authorized));
    QCOMPARE(restoredEmail, email);
    keychain.removeAuthFromKeychainForName(endpoints.keychainItemName);
    QCOMPARE(restore(&restoredEmail), std::optional(KeychainRead::notStored));

    // The keyring itself has nothing left, even if the mark were there.
    defaults.setValueForKey(KeychainPersistence::prefsKeyForName(endpoints.keychainItemName), true);
    QCOMPARE(restore(&restoredEmail), std::optional(KeychainRead::notStored));
}

QTEST_MAIN(TestSignInDesktop)
#include "tst_SignInDesktop.moc"
