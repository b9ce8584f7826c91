// The account's sign-in by the system's browser: the sheet, and what becomes of the sign-in. The test plays the
// browser, in front of a real local Drive.

#include "app/session/AccountSession.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/HostReachability.h"
#include "oauth2/browser/BrowserSignInUi.h"
#include "oauth2/window/GTMOAuth2WindowUi.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/oauth2/browser/ListeningPorts.h"
#include "tests/oauth2/browser/PlayedSignIn.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeWebViews.h"

#include <QCheckBox>
#include <QClipboard>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

} // namespace

class BrowserSessionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(local_.start(), local_.log().constData()); }
    void init() {
        Endpoints endpoints = Endpoints::localDrive(local_.url());
        endpoints.signInPlace = SignInPlace::browser;
        make(endpoints);
    }
    void cleanup() {
        session_.reset();
        window_.reset();
        QVERIFY(listeningPorts().isEmpty());
    }

    // The window where the service leaves the choice, and nothing else is set.
    void place_data() {
        QTest::addColumn<bool>("wantsBrowser"); // the service
        QTest::addColumn<QString>("setting");
        QTest::addColumn<bool>("isInBrowser");
        QTest::newRow("as the service has it") << false << QString() << false;
        QTest::newRow("the browser all the same") << false << u"browser"_s << true;
        QTest::newRow("the service wants the browser") << true << QString() << true;
        QTest::newRow("the service refuses the window") << true << u"window"_s << true;
    }
    void place() {
        QFETCH(bool, wantsBrowser);
        QFETCH(QString, setting);
        QFETCH(bool, isInBrowser);
        Endpoints endpoints = Endpoints::localDrive(local_.url());
        if (wantsBrowser)
            endpoints.signInPlace = SignInPlace::browser;
        make(endpoints);
        if (!setting.isEmpty())
            defaults_->setValueForKey(defaultsKey::signInPlace, setting);
        session_->makeLoginInGoogle(window_.get());
        QCOMPARE(sheet() != nullptr, isInBrowser);
        QCOMPARE(window_->findChild<GTMOAuth2Window*>() != nullptr, !isInBrowser);
        QCOMPARE(session_->preventsApplicationTermination(), !isInBrowser);
        QVERIFY(session_->endSignIn() && !session_->endSignIn());
    }

    void sheetHelpsTheUser() {
        session_->makeLoginInGoogle(window_.get());
        QVERIFY(sheet() && sheet()->isVisible());
        QCOMPARE(sheet()->windowModality(), Qt::WindowModal);
        QVERIFY(sheet()->text().contains(u"127.0.0.1"_s));
        session_->makeLoginInGoogle(window_.get()); // it is open already
        QCOMPARE(window_->findChildren<BrowserSignInWindow*>().size(), 1);
        session_->callToSignIn(u"first this"_s);
        QCOMPARE(sheet()->notice(), u"first this"_s);

        QCOMPARE(opener_->opened().size(), 1);
        sheet()->openAgainButton()->click();
        QCOMPARE(opener_->opened(), (QList<QUrl>{page(), page()}));
        QVERIFY(sheet()->notice().isEmpty());
        opener_->setHasProgram(false);
        sheet()->openAgainButton()->click();
        QVERIFY(sheet()->notice().contains(u"No browser"_s));
        sheet()->copyButton()->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), page().toString(QUrl::FullyEncoded));
    }

    void signsIn_data() {
        QTest::addColumn<bool>("isTicked");  // "keep me signed in"
        QTest::addColumn<bool>("isFailing"); // the keyring
        QTest::newRow("kept") << true << false;
        QTest::newRow("not to be kept") << false << false;
        QTest::newRow("the keyring fails") << true << true;
    }
    void signsIn() {
        QFETCH(bool, isTicked);
        QFETCH(bool, isFailing);
        if (isFailing)
            keyring_->setState(FakeKeyring::State::failing);
        QSignalSpy signedIn(session_.get(), &AccountSession::signedIn);
        QSignalSpy keepingFailed(session_.get(), &AccountSession::keepingFailed);
        bool isHandled = false;
        session_->runSigninThenHandler(window_.get(), [&] { isHandled = true; });
        sheet()->keychainCheckbox()->setChecked(isTicked);
        QPointer<BrowserSignInWindow> shown = sheet();
        bool wasFinishing = false;
        // Whatever is shown meanwhile is shown before the end.
        connect(session_.get(), &AccountSession::signedIn, this,
                [&] { wasFinishing = shown && shown->isFinishing() && !shown->copyButton()->isEnabled(); });
        QVERIFY(playedBrowser_.get(allowedAnswer(playedBrowser_, page(), email_)).body.contains("return to Quenby"));
        QTRY_COMPARE_WITH_TIMEOUT(ended_.size(), 1, patiently);
        QVERIFY(!ended_.first() && isHandled && wasFinishing);
        QCOMPARE(signedIn.size(), 1);
        QCOMPARE(session_->signedInUsername(), email_);
        QVERIFY(session_->UserLogin() && drive_->driveService()->authorizer());
        QTRY_VERIFY_WITH_TIMEOUT(!shown, patiently);

        const QString mark = KeychainPersistence::prefsKeyForName(drive_->endpoints().keychainItemName);
        const bool isKept = isTicked && !isFailing;
        QTRY_COMPARE_WITH_TIMEOUT(keepingFailed.size(), isFailing ? 1 : 0, patiently);
        QTRY_COMPARE_WITH_TIMEOUT(defaults_->boolForKey(mark), isKept, patiently);
        QCOMPARE(keyring_->item(itemOf(drive_->endpoints())).value_or("").contains("refresh_token="), isKept);
    }

    void endsWithoutASignIn_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("isTrouble");
        QTest::newRow("escape") << u"escape"_s << false;
        QTest::newRow("cancel") << u"cancel"_s << false;
        QTest::newRow("its window goes") << u"destroyed"_s << false;
        QTest::newRow("declined in the browser") << u"declined"_s << true;
        QTest::newRow("no browser") << u"no browser"_s << true;
    }
    void endsWithoutASignIn() {
        QFETCH(QString, how);
        QFETCH(bool, isTrouble);
        opener_->setHasProgram(how != u"no browser"_s);
        session_->makeLoginInGoogle(window_.get());
        if (how == u"escape"_s)
            QTest::keyClick(sheet(), Qt::Key_Escape);
        else if (how == u"cancel"_s)
            sheet()->cancelButton()->click();
        else if (how == u"destroyed"_s)
            window_.reset();
        else if (how == u"declined"_s)
            playedBrowser_.get(answerTo(page(), "error=access_denied"));
        QTRY_COMPARE_WITH_TIMEOUT(ended_.size(), 1, patiently);
        QCOMPARE(ended_.first().has_value(), isTrouble);
        QVERIFY(!session_->isSignedIn() && listeningPorts().isEmpty());
        // It can be tried again.
        opener_->setHasProgram(true);
        session_->makeLoginInGoogle(window_.get());
        QCOMPARE(listeningPorts().size(), 1);
    }

    void endedFromOutsideNothingIsTold() {
        session_->makeLoginInGoogle(window_.get());
        QPointer<BrowserSignInWindow> shown = sheet();
        QVERIFY(session_->endSignIn());
        QVERIFY(listeningPorts().isEmpty() && !shown->isVisible());
        QTRY_VERIFY(!shown);
        QVERIFY(ended_.isEmpty());
    }

    // Cancelled, and replaced before that was told.
    void anEndThatCameTooLateEndsNoOther() {
        session_->makeLoginInGoogle(window_.get());
        sheet()->cancelButton()->click();
        QVERIFY(session_->endSignIn());
        session_->makeLoginInGoogle(window_.get());
        QTest::qWait(0);
        QVERIFY(ended_.isEmpty());
        QCOMPARE(listeningPorts().size(), 1);
    }

private:
    void make(const Endpoints& endpoints) {
        session_.reset();
        drive_ = std::make_unique<DriveConnection>(endpoints, grantedClient(), makeSystemTimeSource(), nullptr);
        keyring_ = std::make_unique<FakeKeyring>();
        defaults_ = std::make_unique<FakeDefaults>();
        opener_ = std::make_unique<FakeOpener>();
        window_ = std::make_unique<QWidget>();
        window_->show();
        ended_.clear();
        session_ = std::make_unique<AccountSession>(
            AccountSession::Surroundings{*drive_, *keyring_, *defaults_, webViews_, *opener_, reachability_});
        connect(session_.get(), &AccountSession::signInEnded, this,
                [this](const MaybeError& error) { ended_.append(error); });
    }
    BrowserSignInWindow* sheet() const { return window_->findChild<BrowserSignInWindow*>(); }
    QUrl page() const { return opener_->opened().value(0); }

    const QString email_ = u"ann@example.com"_s;
    LocalDriveProcess local_;
    PlayedBrowser playedBrowser_;
    FakeWebViews webViews_;
    const std::shared_ptr<FakeReachability> reachability_ = std::make_shared<FakeReachability>();
    std::unique_ptr<DriveConnection> drive_;
    std::unique_ptr<FakeKeyring> keyring_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<QWidget> window_;
    QList<MaybeError> ended_;
    std::unique_ptr<AccountSession> session_;
};

QTEST_MAIN(BrowserSessionTest)
#include "tst_browsersession.moc"
