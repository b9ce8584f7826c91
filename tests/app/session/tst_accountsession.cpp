// Who is signed in, on a keyring that behaves as it is told and a real local Drive.

#include "app/session/AccountSession.h"
#include "app/session/SecondChanceAuthorizer.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/HostReachability.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ManualTimeSource.h"

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
        drive_ =
            std::make_unique<DriveConnection>(Endpoints::localDrive(local_.url()), grantedClient(), time_, nullptr);
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
            QVERIFY(!askTheDrive(1).value(0, unanswered_));
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

    // What the keyring holds by the time at which the Drive refuses what was restored from it.
    void refusedRefresh_data() {
        QTest::addColumn<QByteArray>("kept"); // "good", "guest's": ones that the Drive gave out; empty: removed
        QTest::addColumn<bool>("isRefused");
        QTest::addColumn<int>("reads"); // after the first
        QTest::newRow("the same") << refusedGrant(owner_) << true << 1;
        QTest::newRow("a newer one") << QByteArray("good") << false << 1;
        QTest::newRow("a newer one that is refused too") << refusedGrant(owner_).replace("never", "nor") << true << 2;
        QTest::newRow("somebody else's") << QByteArray("guest's") << true << 1;
        QTest::newRow("rubbish") << QByteArray("rubbish") << true << 1;
        QTest::newRow("signed out") << QByteArray() << true << 1;
    }
    void refusedRefresh() {
        QFETCH(QByteArray, kept);
        QFETCH(bool, isRefused);
        QFETCH(int, reads);
        store(refusedGrant(owner_), true);
        QSignalSpy refused(session_.get(), &AccountSession::signInRefused);
        QCOMPARE(check(), std::optional(false));
        QVERIFY(session_->UserLogin()); // nobody can know before it is used
        const QString oldAddress = session_->strSHARE();
        store(kept == "good" ? keptGrant(local_, owner_) : kept == "guest's" ? keptGrant(local_, guest_) : kept, true);
        if (kept.isEmpty())
            defaults_->removeValueForKey(mark_);
        const QList<MaybeError> answers = askTheDrive(3);
        QCOMPARE(answers.size(), 3);
        for (const MaybeError& error : answers)
            QCOMPARE(error.has_value(), isRefused);
        QCOMPARE(refused.size(), isRefused ? 1 : 0);
        QCOMPARE(session_->UserLogin() && session_->isSignedIn(), !isRefused);
        QCOMPARE(bool(drive_->driveService()->authorizer()), !isRefused);
        QCOMPARE(session_->strSHARE().isEmpty(), isRefused);
        QVERIFY(session_->strSHARE() != oldAddress);
        // What is there need not be written again.
        QCOMPARE(keyring_->calls().size(), kept.isEmpty() ? 1 : 1 + reads);
        for (const FakeKeyring::Call& call : keyring_->calls())
            QCOMPARE(call.kind, FakeKeyring::Call::Kind::read);
    }

    void refusedWhileTheKeyringHangs_data() {
        QTest::addColumn<bool>("isSignedOut"); // by the user; otherwise the patience ends
        QTest::newRow("for too long") << false;
        QTest::newRow("signed out meanwhile") << true;
    }
    void refusedWhileTheKeyringHangs() {
        QFETCH(bool, isSignedOut);
        store(refusedGrant(owner_), true);
        QSignalSpy refused(session_.get(), &AccountSession::signInRefused);
        QCOMPARE(check(), std::optional(false));
        keyring_->hold();
        QList<MaybeError> answers;
        askTheDrive(answers);
        QTRY_COMPARE_WITH_TIMEOUT(keyring_->waitingCalls(), 1, patiently);
        QVERIFY(answers.isEmpty() && session_->UserLogin());
        if (isSignedOut)
            session_->makeLogoutFromGoogle(this, [] {});
        else
            time_->advance(std::chrono::minutes(1));
        QVERIFY(!session_->UserLogin());
        QCOMPARE(refused.size(), isSignedOut ? 0 : 1);
        QTRY_COMPARE_WITH_TIMEOUT(answers.size(), 1, patiently);
        QVERIFY(answers.first());
        keyring_->setItem(item_, keptGrant(local_, owner_));
        keyring_->release(); // too late
        QTest::qWait(0);
        QVERIFY(!session_->UserLogin() && !drive_->driveService()->authorizer());
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
    void askTheDrive(QList<MaybeError>& answers) {
        drive_->driveService()->executeQuery(
            GTLQueryDrive::queryForAboutGet(), this,
            [&](const auto&, const auto&, const MaybeError& error) { answers.append(error); });
    }
    // So many times at once; fewer answers when one does not come.
    QList<MaybeError> askTheDrive(int times) {
        QList<MaybeError> answers;
        for (int i = 0; i < times; ++i)
            askTheDrive(answers);
        (void)QTest::qWaitFor([&] { return answers.size() == times; }, patiently);
        return answers;
    }
    GTMOAuth2Authentication& authorizer() {
        return *dynamic_cast<SecondChanceAuthorizer&>(*drive_->driveService()->authorizer()).authentication();
    }

    const QString owner_ = u"ann@example.com"_s;
    const Error unanswered_{u"the test"_s, 0};
    const QString guest_ = u"guest@example.com"_s;
    LocalDriveProcess local_;
    const std::shared_ptr<ManualTimeSource> time_ = std::make_shared<ManualTimeSource>();
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
