// Who is signed in, on a keyring that behaves as it is told and a real local Drive.

#include "app/session/AccountSession.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/HostReachability.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeWebViews.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

} // namespace

class AccountSessionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(local_.start(), local_.log().constData()); }
    void init() {
        session_.reset();
        drive_ = std::make_unique<DriveConnection>(Endpoints::localDrive(local_.url()), grantedClient(),
                                                   makeSystemTimeSource(), nullptr);
        item_ = itemOf(drive_->endpoints());
        mark_ = KeychainPersistence::prefsKeyForName(item_.serviceName);
        keyring_ = std::make_unique<FakeKeyring>();
        defaults_ = std::make_unique<FakeDefaults>();
        webViews_.forgotten.clear();
        session_ = std::make_unique<AccountSession>(
            AccountSession::Surroundings{*drive_, *keyring_, *defaults_, webViews_, opener_, nullptr});
    }
    void cleanup() { session_.reset(); }

    void restoring_data() {
        QTest::addColumn<QByteArray>("stored"); // "good": one that the Drive gave out
        QTest::addColumn<bool>("isMarked");
        QTest::addColumn<bool>("isThere"); // the keyring
        QTest::addColumn<bool>("isSignedIn");
        QTest::addColumn<bool>("isTrouble");
        QTest::newRow("kept") << QByteArray("good") << true << true << true << false;
        QTest::newRow("another installation's") << QByteArray("good") << false << true << false << false;
        QTest::newRow("not what was written") << QByteArray("rubbish") << true << true << false << false;
        QTest::newRow("of nobody") << QByteArray("refresh_token=r") << true << true << false << false;
        QTest::newRow("gone") << QByteArray() << true << true << false << false;
        QTest::newRow("no keyring any more") << QByteArray("good") << true << false << false << true;
    }
    void restoring() {
        QFETCH(QByteArray, stored);
        QFETCH(bool, isMarked);
        QFETCH(bool, isThere);
        QFETCH(bool, isSignedIn);
        QFETCH(bool, isTrouble);
        store(stored == "good" ? keptGrant(local_, owner_) : stored, isMarked);
        if (!isThere)
            keyring_->setState(FakeKeyring::State::missing);
        if (isSignedIn)
            QTest::ignoreMessage(QtInfoMsg, "Successfull login");
        QCOMPARE(check(), std::optional(isTrouble));
        QCOMPARE(session_->UserLogin(), isSignedIn);
        QCOMPARE(session_->isSignedIn(), isSignedIn);
        QCOMPARE(session_->signedInUsername(), isSignedIn ? owner_ : QString());
        QCOMPARE(session_->strSHARE().isEmpty(), !isSignedIn);
        if (isSignedIn)
            QVERIFY(!askTheDrive());
    }

    void ofTwoChecksTheLaterAnswers() {
        store(keptGrant(local_, owner_), true);
        keyring_->hold();
        session_->loginCheck(this, [](const MaybeError&) { QFAIL("the earlier one"); });
        bool isChecked = false;
        session_->loginCheck(this, [&](const MaybeError&) { isChecked = true; });
        keyring_->release();
        QTRY_VERIFY(isChecked);
        QVERIFY(session_->UserLogin());
    }

    void refusedRefresh() {
        store(refusedGrant(owner_), true);
        QSignalSpy refused(session_.get(), &AccountSession::signInRefused);
        QCOMPARE(check(), std::optional(false));
        QVERIFY(session_->UserLogin()); // nobody can know before it is used
        QVERIFY(askTheDrive());
        QCOMPARE(refused.size(), 1);
        QVERIFY(!session_->UserLogin() && !session_->isSignedIn() && session_->strSHARE().isEmpty());
        QVERIFY(!drive_->driveService()->authorizer());
    }

    void newRefreshToken_data() {
        QTest::addColumn<bool>("isMarked");
        QTest::addColumn<bool>("isHeld"); // the keyring takes its time, and a third token comes meanwhile
        QTest::newRow("kept") << true << false;
        QTest::newRow("not wanted there") << false << false;
        QTest::newRow("two at once") << true << true;
    }
    void newRefreshToken() {
        QFETCH(bool, isMarked);
        QFETCH(bool, isHeld);
        store(keptGrant(local_, owner_), true);
        QCOMPARE(check(), std::optional(false));
        if (!isMarked)
            defaults_->removeValueForKey(mark_);
        const auto give = [this](const QString& token) {
            authorizer().setKeysForResponseDictionary({{u"refresh_token"_s, token}, {u"access_token"_s, u"a"_s}});
        };
        const QByteArray before = keyring_->item(item_).value_or("");
        if (isHeld)
            keyring_->hold();
        give(u"second"_s);
        if (isHeld) {
            give(u"third"_s);
            keyring_->release();
        }
        const QByteArray last = isHeld ? "refresh_token=third" : "refresh_token=second";
        const QByteArray expected = isMarked ? last : before;
        QTRY_VERIFY(keyring_->item(item_).value_or("").contains(expected));
        QTRY_COMPARE(defaults_->boolForKey(mark_), isMarked);
        QVERIFY(session_->strSHARE().contains(isHeld ? u"access_token=third"_s : u"access_token=second"_s));
    }

    void signOut_data() {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("isTrouble");
        QTest::newRow("as it should be") << int(FakeKeyring::State::available) << false;
        QTest::newRow("the keyring fails") << int(FakeKeyring::State::failing) << true;
        QTest::newRow("the keyring is gone") << int(FakeKeyring::State::missing) << true;
    }
    void signOut() {
        QFETCH(int, state);
        QFETCH(bool, isTrouble);
        store(keptGrant(local_, owner_), true);
        QCOMPARE(check(), std::optional(false));
        keyring_->setState(static_cast<FakeKeyring::State>(state));
        QTest::ignoreMessage(isTrouble ? QtWarningMsg : QtInfoMsg, isTrouble ? "error" : "sucess logout");
        QSignalSpy troubled(session_.get(), &AccountSession::signOutTroubled);
        bool isDone = false;
        session_->makeLogoutFromGoogle(this, [&] { isDone = true; });
        // None of it waits for the keyring.
        QVERIFY(!session_->UserLogin() && !session_->isSignedIn() && !drive_->driveService()->authorizer());
        QVERIFY(!defaults_->contains(mark_));
        QCOMPARE(webViews_.forgotten, QStringList{QStringLiteral("account")});
        QTRY_VERIFY(isDone);
        QCOMPARE(troubled.size(), isTrouble ? 1 : 0);
        QCOMPARE(keyring_->item(item_).has_value(), isTrouble);
        QCOMPARE(check(), std::optional(false));
        QVERIFY(!session_->UserLogin()); // also with the item still there
    }

private:
    void store(const QByteArray& data, bool isMarked) {
        if (!data.isNull())
            keyring_->setItem(item_, data);
        if (isMarked)
            defaults_->setValueForKey(mark_, true);
    }
    // Whether the keyring made trouble; nothing without an answer.
    std::optional<bool> check() {
        std::optional<bool> isTrouble;
        session_->loginCheck(this, [&](const MaybeError& error) { isTrouble = error.has_value(); });
        return QTest::qWaitFor([&] { return isTrouble.has_value(); }, patiently) ? isTrouble : std::nullopt;
    }
    MaybeError askTheDrive() {
        std::optional<MaybeError> answer;
        drive_->driveService()->executeQuery(GTLQueryDrive::queryForAboutGet(), this,
                                             [&](const auto&, const auto&, const MaybeError& e) { answer = e; });
        const bool isAnswered = QTest::qWaitFor([&] { return answer.has_value(); }, patiently);
        return isAnswered ? *answer : MaybeError(Error(u"the test"_s, 0));
    }
    GTMOAuth2Authentication& authorizer() {
        return dynamic_cast<GTMOAuth2Authentication&>(*drive_->driveService()->authorizer());
    }

    const QString owner_ = u"ann@example.com"_s;
    LocalDriveProcess local_;
    FakeWebViews webViews_;
    FakeOpener opener_;
    KeyringItem item_;
    QString mark_;
    std::unique_ptr<DriveConnection> drive_;
    std::unique_ptr<FakeKeyring> keyring_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<AccountSession> session_;
};

QTEST_GUILESS_MAIN(AccountSessionTest)
#include "tst_accountsession.moc"
