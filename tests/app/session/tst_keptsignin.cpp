// A command's session with the sign-in that the desktop program keeps. The local Drive plays the provider's.

#include "app/cli/Console.h"
#include "app/cli/Session.h"
#include "core/DefaultsKeys.h"
#include "platform/PlatformServices.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/oauth2/browser/PlayedSignIn.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"

#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTest>
#include <QUrlQuery>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

} // namespace

class KeptSignInTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // No browser of whoever runs the test is opened.
        qunsetenv("DISPLAY");
        qunsetenv("WAYLAND_DISPLAY");
        QVERIFY2(local_.start(), local_.log().constData());
    }
    void init() {
        endpoints_ = Endpoints::localDrive(local_.url());
        mark_ = KeychainPersistence::prefsKeyForName(endpoints_.keychainItemName);
        auto defaults = std::make_unique<FakeDefaults>();
        auto keyring = std::make_unique<FakeKeyring>();
        defaults->setValueForKey(u"clientID"_s, grantedClient().clientID);
        defaults->setValueForKey(u"clientSecret"_s, grantedClient().clientSecret);
        defaults_ = defaults.get();
        keyring_ = keyring.get();
        storage_ = std::make_unique<AccountStorage>(AccountStorage{std::move(defaults), std::move(keyring)});
        make({});
    }
    void cleanup() { session_.reset(); }

    void opening_data() {
        QTest::addColumn<QByteArray>("stored"); // "good": one that the Drive gave out
        QTest::addColumn<bool>("isMarked");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("complaint"); // empty: it opens
        using State = FakeKeyring::State;
        const auto row = [](const char* title, const QByteArray& stored, bool isMarked, State state,
                            const char* complaint) {
            QTest::newRow(title) << stored << isMarked << int(state) << QString::fromLatin1(complaint);
        };
        row("good", "good", true, State::available, "");
        row("never signed in", {}, false, State::missing, "start Quenby and sign in there");
        row("signed out elsewhere", {}, true, State::available, "start Quenby and sign in there");
        row("not what was written", "rubbish", true, State::available, "can't be read any more");
        row("refused", refusedGrant(u"a@example.com"_s), true, State::available, "no longer accepts the sign-in");
        row("not unlocked", "good", true, State::locked, "did not do it"); // the keyring's own words
        row("no keyring", "good", true, State::missing, "There is no keyring.");
        row("the keyring fails", "good", true, State::failing, "did not do it");
    }
    void opening() {
        QFETCH(QByteArray, stored);
        QFETCH(bool, isMarked);
        QFETCH(int, state);
        QFETCH(QString, complaint);
        store(stored == "good" ? keptGrant(local_, u"ann@example.com"_s) : stored, isMarked);
        keyring_->setState(static_cast<FakeKeyring::State>(state));
        std::optional<MaybeError> opened;
        session_->open(this, [&](const MaybeError& error) { opened = error; });
        keyring_->dismissUnlock();
        QTRY_VERIFY_WITH_TIMEOUT(opened, patiently);
        const QString said = *opened ? (*opened)->description() : QString();
        QVERIFY2(complaint.isEmpty() ? said.isEmpty() : said.contains(complaint), qPrintable(said));
        QVERIFY(!said.contains(u"never given out"_s));
        if (complaint.isEmpty())
            QCOMPARE(session_->authentication()->userEmail(), u"ann@example.com"_s);
        // Reading changes nothing.
        for (const FakeKeyring::Call& call : keyring_->calls())
            QCOMPARE(call.kind, FakeKeyring::Call::Kind::read);
    }

    // With somebody at the terminal who has a browser.
    void signsInByTheBrowser_data() {
        QTest::addColumn<QByteArray>("stored"); // "good": one that the Drive gave out
        QTest::addColumn<bool>("isThere");      // the keyring
        QTest::addColumn<bool>("isAsked");
        QTest::newRow("never signed in") << QByteArray() << true << true;
        QTest::newRow("not what was written") << QByteArray("rubbish") << true << true;
        QTest::newRow("refused") << refusedGrant(u"a@example.com"_s) << true << true;
        QTest::newRow("signed in already") << QByteArray("good") << true << false;
        QTest::newRow("nowhere to keep it") << QByteArray() << false << false;
    }
    void signsInByTheBrowser() {
        QFETCH(QByteArray, stored);
        QFETCH(bool, isThere);
        QFETCH(bool, isAsked);
        QTemporaryFile printed;
        QVERIFY(printed.open());
        Console console({.quiet = true, .errors = printed.handle()});
        Session::Settings settings;
        settings.signsIn = true;
        make(settings, console);
        store(stored == "good" ? keptGrant(local_, u"ann@example.com"_s) : stored, !stored.isEmpty());
        if (!isThere)
            keyring_->setState(FakeKeyring::State::missing);
        std::optional<MaybeError> opened;
        session_->open(this, [&](const MaybeError& error) { opened = error; });
        const auto page = [&] { return pagePrintedIn(printed); };
        QTRY_VERIFY_WITH_TIMEOUT(opened || !page().isEmpty(), patiently);
        QCOMPARE(!page().isEmpty(), isAsked);
        if (isAsked) {
            PlayedBrowser browser;
            QCOMPARE(browser.get(allowedAnswer(browser, page(), u"ann@example.com"_s)).status, 200);
        }
        QTRY_VERIFY_WITH_TIMEOUT(opened, patiently);
        if (!isThere) {
            QVERIFY(*opened && (*opened)->description().contains(u"There is no keyring."_s));
            return;
        }
        QVERIFY2(!*opened, qPrintable(*opened ? (*opened)->description() : QString()));
        QCOMPARE(session_->authentication()->userEmail(), u"ann@example.com"_s);
        bool isClosed = false;
        session_->close(this, [&] { isClosed = true; });
        QTRY_VERIFY(isClosed);
        QVERIFY(defaults_->boolForKey(mark_));
        QVERIFY(keyring_->item(itemOf(endpoints_)).value_or("").contains("ann%40example.com"));
    }

    // Whoever opened only the program's own files to the desktop program does not open everything here.
    void asksForTheChosenAccess() {
        endpoints_.clientConsoleURL = QUrl(u"https://console.example"_s);
        defaults_->setValueForKey(defaultsKey::driveAccess, u"files"_s);
        QTemporaryFile printed;
        QVERIFY(printed.open());
        Console console({.quiet = true, .errors = printed.handle()});
        Session::Settings settings;
        settings.signsIn = true;
        make(settings, console);
        session_->open(this, [](const MaybeError&) {});
        QTRY_VERIFY_WITH_TIMEOUT(!pagePrintedIn(printed).isEmpty(), patiently);
        const QString scope = QUrlQuery(pagePrintedIn(printed)).queryItemValue(u"scope"_s, QUrl::FullyDecoded);
        QVERIFY2(scope.split(u' ').contains(endpoints_.driveFileScope), qPrintable(scope));
        QVERIFY2(!scope.split(u' ').contains(endpoints_.driveScope), qPrintable(scope));
    }

    void newRefreshTokenIsKeptBeforeTheEnd() {
        store(keptGrant(local_, u"ann@example.com"_s), true);
        std::optional<MaybeError> opened;
        session_->open(this, [&](const MaybeError& error) { opened = error; });
        QTRY_VERIFY_WITH_TIMEOUT(opened, patiently);
        QVERIFY(!*opened);
        keyring_->hold();
        session_->authentication()->setKeysForResponseDictionary({{u"refresh_token"_s, u"second"_s}});
        bool isClosed = false;
        session_->close(this, [&] { isClosed = true; });
        QTest::qWait(0);
        QVERIFY(!isClosed);
        keyring_->release();
        QTRY_VERIFY(isClosed);
        QVERIFY(keyring_->item(itemOf(endpoints_)).value_or("").contains("refresh_token=second"));
        QVERIFY(defaults_->boolForKey(mark_));
    }

private:
    void make(const Session::Settings& settings) { make(settings, console_); }
    void make(const Session::Settings& settings, Console& console) {
        session_ = std::make_unique<Session>(console, settings,
                                             Session::Provider{endpoints_, [this] { return std::move(*storage_); }},
                                             makeSystemTimeSource());
    }
    static QUrl pagePrintedIn(QFile& printed) {
        static const QRegularExpression address(u"^http://\\S+$"_s, QRegularExpression::MultilineOption);
        printed.seek(0);
        return QUrl(address.match(QString::fromUtf8(printed.readAll())).captured());
    }
    void store(const QByteArray& data, bool isMarked) {
        if (!data.isNull())
            keyring_->setItem(itemOf(endpoints_), data);
        if (isMarked)
            defaults_->setValueForKey(mark_, true);
    }

    LocalDriveProcess local_;
    Console console_{Console::Settings{}};
    Endpoints endpoints_;
    QString mark_;
    FakeDefaults* defaults_ = nullptr; // these two belong to the session
    FakeKeyring* keyring_ = nullptr;
    std::unique_ptr<AccountStorage> storage_;
    std::unique_ptr<Session> session_;
};

QTEST_GUILESS_MAIN(KeptSignInTest)
#include "tst_keptsignin.moc"
