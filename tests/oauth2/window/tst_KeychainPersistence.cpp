#include "oauth2/GTMOAuth2SignIn.h"
#include "oauth2/window/KeychainPersistence.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/support/ManualTimeSource.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

using Call = FakeKeyring::Call;

class TestKeychainPersistence : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();

    void savedSignInComesBack();
    void saveReplacesAndMarksLast();
    void nothingIsSavedThatCannotAuthorize();
    void failedSaveLeavesNoMark();
    void removalForgetsBoth();
    void removalDuringASaveComesOutLast();
    void reading_data();
    void reading();
    void cancelledReadChangesNothing();

private:
    std::shared_ptr<GTMOAuth2Authentication> makeAuth(const QString& refreshToken = {}) const;
    QStringList callKinds() const;

    const QString name_ = u"Drive: Test"_s;
    const QString mark_ = u"OAuth2: Drive: Test"_s;
    const KeyringItem item_{u"Drive: Test"_s, u"OAuth"_s};
    const std::shared_ptr<ManualTimeSource> time_ = std::make_shared<ManualTimeSource>();
    std::unique_ptr<FakeKeyring> keyring_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<KeychainPersistence> keychain_;
};

void TestKeychainPersistence::init() {
    keychain_.reset();
    keyring_ = std::make_unique<FakeKeyring>();
    defaults_ = std::make_unique<FakeDefaults>();
    keychain_ = std::make_unique<KeychainPersistence>(*keyring_, *defaults_, Endpoints::provider(), time_);
}

std::shared_ptr<GTMOAuth2Authentication> TestKeychainPersistence::makeAuth(const QString& refreshToken) const {
    const auto auth = GTMOAuth2SignIn::standardGoogleAuthenticationForScope(u"drive"_s, u"client"_s, u"s3cret"_s,
                                                                            Endpoints::provider(), time_);
    auth->setRefreshToken(refreshToken);
    if (!refreshToken.isEmpty())
        auth->setAccessToken(u"access"_s);
    return auth;
}

QStringList TestKeychainPersistence::callKinds() const {
    static const QStringList names{u"read"_s, u"write"_s, u"remove"_s};
    QStringList kinds;
    for (const Call& call : keyring_->calls())
        kinds.append(names.at(static_cast<int>(call.kind)));
    return kinds;
}

void TestKeychainPersistence::savedSignInComesBack() {
    const auto saved = makeAuth(u"refresh"_s);
    saved->setUserEmail(u"me@example.com"_s);
    keychain_->saveAuthToKeychainForName(name_, *saved);
    QTRY_VERIFY(defaults_->boolForKey(mark_));
    const QByteArray data = keyring_->item(item_).value_or(QByteArray());
    QCOMPARE(data, saved->persistenceResponseString().toUtf8());
    QVERIFY(!data.contains("s3cret"));

    std::shared_ptr<GTMOAuth2Authentication> restored;
    keychain_->authForGoogleFromKeychainForName(name_, u"client"_s, u"s3cret"_s, this,
                                                [&](const auto& auth, KeychainRead outcome, const MaybeError& error) {
                                                    QCOMPARE(outcome, KeychainRead::authorized);
                                                    QVERIFY(!error);
                                                    restored = auth;
                                                });
    QTRY_VERIFY(restored);
    QCOMPARE(restored->refreshToken(), u"refresh"_s);
    QCOMPARE(restored->userEmail(), u"me@example.com"_s);
    QCOMPARE(restored->tokenURL(), Endpoints::provider().tokenURL);
    QCOMPARE(restored->serviceProvider(), u"Google"_s);
}

void TestKeychainPersistence::saveReplacesAndMarksLast() {
    defaults_->setValueForKey(mark_, true);
    keyring_->hold();
    keychain_->saveAuthToKeychainForName(name_, *makeAuth(u"refresh"_s));
    QVERIFY(!defaults_->boolForKey(mark_)); // a program that is killed now must not trust a half-done save
    keyring_->release();
    QTRY_VERIFY(defaults_->boolForKey(mark_));
    QCOMPARE(callKinds(), (QStringList{u"remove"_s, u"write"_s}));
}

void TestKeychainPersistence::nothingIsSavedThatCannotAuthorize() {
    keyring_->setItem(item_, "old");
    defaults_->setValueForKey(mark_, true);
    bool isDone = false;
    keychain_->saveAuthToKeychainForName(name_, *makeAuth(), this, [&](const MaybeError& error) { isDone = !error; });
    QTRY_VERIFY(isDone);
    QVERIFY(!keyring_->item(item_));
    QVERIFY(!defaults_->boolForKey(mark_));
}

void TestKeychainPersistence::failedSaveLeavesNoMark() {
    defaults_->setValueForKey(mark_, true);
    keyring_->setState(FakeKeyring::State::failing);
    QSignalSpy failed(keychain_.get(), &KeychainPersistence::saveFailed);
    MaybeError told;
    keychain_->saveAuthToKeychainForName(name_, *makeAuth(u"refresh"_s), this,
                                         [&](const MaybeError& error) { told = error; });
    QTRY_VERIFY(told);
    QCOMPARE(failed.size(), 1);
    QVERIFY(!defaults_->contains(mark_));
}

void TestKeychainPersistence::removalForgetsBoth() {
    keyring_->setItem(item_, "old");
    defaults_->setValueForKey(mark_, true);
    keychain_->removeAuthFromKeychainForName(name_);
    QVERIFY(!defaults_->contains(mark_));
    QTRY_VERIFY(!keyring_->item(item_));
}

void TestKeychainPersistence::removalDuringASaveComesOutLast() {
    keyring_->hold();
    keychain_->saveAuthToKeychainForName(name_, *makeAuth(u"refresh"_s));
    bool isRemoved = false;
    keychain_->removeAuthFromKeychainForName(name_, this, [&](const MaybeError&) { isRemoved = true; });
    connect(defaults_.get(), &Defaults::changed, this, [this] { QVERIFY(!defaults_->boolForKey(mark_)); });
    keyring_->release();
    QTRY_VERIFY(isRemoved);
    QVERIFY(!keyring_->item(item_));
    QVERIFY(!defaults_->contains(mark_));
}

void TestKeychainPersistence::reading_data() {
    using State = FakeKeyring::State;
    QTest::addColumn<bool>("isMarked");
    QTest::addColumn<QByteArray>("stored"); // null: no item
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<bool>("isKeyringAsked");
    const auto row = [](const char* title, bool isMarked, const QByteArray& stored, State state, KeychainRead outcome) {
        QTest::newRow(title) << isMarked << stored << static_cast<int>(state) << static_cast<int>(outcome) << isMarked;
    };
    const QByteArray good = "refresh_token=r&scope=drive&serviceProvider=Google";
    row("stored", true, good, State::available, KeychainRead::authorized);
    row("left by another installation", false, good, State::available, KeychainRead::notStored);
    row("never stored, no keyring", false, {}, State::missing, KeychainRead::notStored);
    row("item gone", true, {}, State::available, KeychainRead::notStored);
    row("empty item", true, "", State::available, KeychainRead::notOurs);
    row("no UTF-8", true, "refresh_token=\xff\xfe", State::available, KeychainRead::notOurs);
    row("something else", true, "password", State::available, KeychainRead::notOurs);
    row("not unlocked", true, good, State::locked, KeychainRead::locked);
    row("no keyring", true, good, State::missing, KeychainRead::unavailable);
    row("keyring fails", true, good, State::failing, KeychainRead::failed);
}

void TestKeychainPersistence::reading() {
    QFETCH(bool, isMarked);
    QFETCH(QByteArray, stored);
    QFETCH(int, state);
    QFETCH(int, outcome);
    QFETCH(bool, isKeyringAsked);
    if (isMarked)
        defaults_->setValueForKey(mark_, true);
    if (!stored.isNull())
        keyring_->setItem(item_, stored);
    keyring_->setState(static_cast<FakeKeyring::State>(state));
    const auto auth = makeAuth();
    auth->setAccessToken(u"stale"_s);
    std::optional<KeychainRead> told;
    bool hasError = false;
    keychain_->authorizeFromKeychainForName(name_, auth, this, [&](KeychainRead read, const MaybeError& error) {
        told = read;
        hasError = error.has_value();
    });
    QVERIFY(auth->accessToken().isEmpty());
    if (keyring_->waitingCalls() > 0)
        keyring_->dismissUnlock();
    QTRY_VERIFY(told);
    QCOMPARE(static_cast<int>(*told), outcome);
    QCOMPARE(auth->canAuthorize(), *told == KeychainRead::authorized);
    QCOMPARE(hasError, *told != KeychainRead::authorized && *told != KeychainRead::notStored);
    QCOMPARE(!keyring_->calls().isEmpty(), isKeyringAsked);
}

void TestKeychainPersistence::cancelledReadChangesNothing() {
    defaults_->setValueForKey(mark_, true);
    keyring_->setItem(item_, "refresh_token=r");
    keyring_->hold();
    const auto cancelled = makeAuth();
    const CompletionTicket ticket = keychain_->authorizeFromKeychainForName(
        name_, cancelled, this, [](KeychainRead, const MaybeError&) { QFAIL("cancelled"); });
    ticket.cancel();
    bool isRead = false;
    keychain_->authorizeFromKeychainForName(name_, makeAuth(), this,
                                            [&](KeychainRead, const MaybeError&) { isRead = true; });
    keyring_->release();
    QTRY_VERIFY(isRead);
    QVERIFY(!cancelled->canAuthorize());
}

QTEST_GUILESS_MAIN(TestKeychainPersistence)
#include "tst_KeychainPersistence.moc"
