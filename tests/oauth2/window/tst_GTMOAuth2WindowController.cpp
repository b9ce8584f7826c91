#include "oauth2/OAuth2Error.h"
#include "oauth2/window/GTMOAuth2WindowController.h"
#include "oauth2/window/GTMOAuth2WindowUi.h"
#include "oauth2/window/KeychainPersistence.h"
#include "oauth2/window/SignInPage.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestGTMOAuth2WindowController : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void titleSignsInAndStores();
    void handledRedirectIsNotLoaded();
    void storing_data();
    void storing();
    void providerErrorIsReportedAndKeepsWhatIsStored();
    void closing_data();
    void closing();
    void nothingMoreIsToldAfterTheAnswer();
    void cancelledSignInTellsNothing();
    void missingClientIsReported();
    void clock_data();
    void clock();
    void initialHTMLComesFirst();
    void cookies_data();
    void cookies();
    void newWindowsOpenElsewhere();
    void pageThatDoesNotComeIsTriedAgain();
    void missingEngineIsExplained();
    void lostNetworkIsShown();
    void sheetBelongsToItsWindow();
    void sheetEndsWithItsWindow();

private:
    void makeController(const QString& itemName = u"Drive: Test"_s);
    // Shows the window and begins to load the page.
    void start(QWidget* window = nullptr);
    FakeWebView& view() { return webViews_->last(); }
    GTMOAuth2Window& window() { return *controller_->window(); }
    bool succeeded() const { return outcomes_.size() == 1 && !outcomes_.front(); }
    bool finishedWith(const QString& domain, qint64 code) const {
        return outcomes_.size() == 1 && outcomes_.front() && outcomes_.front()->is(domain, code);
    }

    const KeyringItem item_{u"Drive: Test"_s, u"OAuth"_s};
    std::shared_ptr<ManualTimeSource> time_;
    std::shared_ptr<FakeReachability> network_;
    FakeNetwork server_;
    std::shared_ptr<GTMHTTPFetcherService> service_;
    std::unique_ptr<FakeKeyring> keyring_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<FakeWebViews> webViews_;
    std::unique_ptr<KeychainPersistence> keychain_;
    std::shared_ptr<GTMOAuth2Authentication> auth_;
    std::unique_ptr<GTMOAuth2WindowController> controller_;
    std::vector<MaybeError> outcomes_;
};

void TestGTMOAuth2WindowController::init() {
    time_ = std::make_shared<ManualTimeSource>();
    network_ = std::make_shared<FakeReachability>();
    server_ = FakeNetwork();
    server_.handler = [](const URLRequest&) -> FakeReply {
        return {200,
                R"({"access_token":"token","refresh_token":"refresh","expires_in":3600,"sub":"7","email":"me@x"})"};
    };
    service_ = server_.makeFetcherService(time_);
    keyring_ = std::make_unique<FakeKeyring>();
    defaults_ = std::make_unique<FakeDefaults>();
    opener_ = std::make_unique<FakeOpener>();
    webViews_ = std::make_unique<FakeWebViews>();
    keychain_ = std::make_unique<KeychainPersistence>(*keyring_, *defaults_, Endpoints::provider(), time_);
    makeController();
}

void TestGTMOAuth2WindowController::cleanup() {
    controller_.reset();
    keychain_.reset();
}

void TestGTMOAuth2WindowController::makeController(const QString& itemName) {
    outcomes_.clear();
    const Endpoints endpoints = Endpoints::provider();
    auth_ =
        GTMOAuth2SignIn::standardGoogleAuthenticationForScope(u"drive"_s, u"client"_s, u"s3cret"_s, endpoints, time_);
    auth_->setFetcherService(service_);
    controller_ = GTMOAuth2WindowController::controllerWithAuthentication(
        auth_, endpoints.authorizationURL, itemName,
        {*webViews_, *keychain_, *opener_, {endpoints, time_, network_}, u"me"_s});
}

void TestGTMOAuth2WindowController::start(QWidget* window) {
    controller_->signInSheetModalForWindow(window, this, [this](const auto& auth, const MaybeError& error) {
        QCOMPARE(auth, auth_);
        outcomes_.push_back(error);
    });
    time_->advance(10ms);
    settle();
}

void TestGTMOAuth2WindowController::titleSignsInAndStores() {
    start();
    QVERIFY(window().isVisible());
    QCOMPARE(window().windowTitle(), u"Sign In"_s);
    QCOMPARE(view().loads, QList<QUrl>{controller_->initialRequest()->url});
    view().finish(u"Sign in"_s);
    QVERIFY(window().isVisible());
    view().changeTitle(u"Success code=abc"_s);
    QVERIFY(!window().isVisible());
    settle();
    QVERIFY(succeeded());
    QVERIFY(auth_->canAuthorize());
    QVERIFY(keyring_->item(item_));
    QVERIFY(defaults_->boolForKey(u"OAuth2: Drive: Test"_s));
    time_->advance(100ms);
    QVERIFY(!controller_->window());
    QVERIFY(!webViews_->views.front());
}

void TestGTMOAuth2WindowController::handledRedirectIsNotLoaded() {
    auth_->setRedirectURI(u"http://localhost/answer"_s);
    start();
    QVERIFY(view().redirect(QUrl(u"https://accounts.test/step"_s)));
    QVERIFY(view().navigate(QUrl(u"http://localhost/answer?code=no"_s), WebNavigation::Kind::linkClicked, false));
    QCOMPARE(server_.requests.size(), 0U); // a frame inside of the page is not the provider's answer
    QVERIFY(!view().redirect(QUrl(u"http://localhost/answer?code=abc"_s)));
    QVERIFY(view().redirect(QUrl(u"http://localhost/answer?code=def"_s))); // afterwards all pass
    settle();
    QVERIFY(succeeded());
    QCOMPARE(server_.requestsTo(u"/o/oauth2/token"_s), 1);
}

void TestGTMOAuth2WindowController::storing_data() {
    QTest::addColumn<QString>("itemName");
    QTest::addColumn<bool>("isChecked");
    QTest::addColumn<bool>("isKept"); // of the item that was there before
    QTest::addColumn<bool>("isStored");
    QTest::newRow("checked") << u"Drive: Test"_s << true << false << true;
    QTest::newRow("not checked") << u"Drive: Test"_s << false << false << false;
    QTest::newRow("no item name") << QString() << true << true << false;
}

void TestGTMOAuth2WindowController::storing() {
    QFETCH(QString, itemName);
    QFETCH(bool, isChecked);
    QFETCH(bool, isKept);
    QFETCH(bool, isStored);
    keyring_->setItem(item_, "old");
    makeController(itemName);
    start();
    QCOMPARE(controller_->keychainCheckbox()->isVisible(), !itemName.isEmpty());
    controller_->keychainCheckbox()->setChecked(isChecked);
    view().finish(u"Success code=abc"_s);
    time_->advance(100ms); // the window goes before the sign-in is done
    settle();
    QVERIFY(succeeded());
    const auto item = keyring_->item(item_);
    QCOMPARE(item == QByteArray("old"), isKept);
    QCOMPARE(item && item->contains("refresh_token"), isStored);
}

void TestGTMOAuth2WindowController::providerErrorIsReportedAndKeepsWhatIsStored() {
    keyring_->setItem(item_, "old");
    start();
    view().finish(u"Denied error=access_denied"_s);
    settle();
    QVERIFY(finishedWith(errorDomain::oauth2, static_cast<qint64>(oauth2::ErrorCode::authorizationFailed)));
    QVERIFY(keyring_->calls().isEmpty());
}

void TestGTMOAuth2WindowController::closing_data() {
    QTest::addColumn<QString>("how");
    for (const char* how : {"Escape", "Cancel", "window manager", "page", "controller"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void TestGTMOAuth2WindowController::closing() {
    QFETCH(QString, how);
    start();
    view().finish(u"Sign in"_s);
    if (how == u"Escape"_s)
        QTest::keyClick(&window(), Qt::Key_Escape);
    else if (how == u"Cancel"_s)
        controller_->webCloseButton()->click();
    else if (how == u"window manager"_s)
        window().close();
    else if (how == u"page"_s)
        view().requestClose();
    else
        controller_->closeWindow();
    QVERIFY(!window().isVisible());
    settle();
    QVERIFY(finishedWith(errorDomain::oauth2, -1000));
    view().changeTitle(u"Success code=late"_s);
    controller_->closeWindow();
    settle();
    QCOMPARE(outcomes_.size(), 1U);
    QVERIFY(server_.requests.empty());
}

void TestGTMOAuth2WindowController::nothingMoreIsToldAfterTheAnswer() {
    server_.isHolding = true;
    start();
    view().finish(u"Success code=abc"_s);
    window().close();
    controller_->closeWindow();
    settle();
    QVERIFY(outcomes_.empty()); // the exchange runs
    server_.release();
    settle();
    QVERIFY(succeeded());
}

void TestGTMOAuth2WindowController::cancelledSignInTellsNothing() {
    start();
    controller_->cancelSigningIn();
    QVERIFY(!window().isVisible());
    time_->advance(100ms);
    settle();
    QVERIFY(outcomes_.empty());
    QVERIFY(keyring_->calls().isEmpty());
}

void TestGTMOAuth2WindowController::missingClientIsReported() {
    auth_->setClientID({});
    start();
    QVERIFY(finishedWith(errorDomain::oauth2, static_cast<qint64>(oauth2::ErrorCode::authorizationFailed)));
    QVERIFY(!controller_->window());
}

void TestGTMOAuth2WindowController::clock_data() {
    QTest::addColumn<qint64>("now");
    QTest::addColumn<bool>("isLoaded");
    QTest::newRow("1 January 2011") << qint64(1293840000) << false;
    QTest::newRow("a second later") << qint64(1293840001) << true;
    QTest::newRow("1970") << qint64(0) << false;
}

void TestGTMOAuth2WindowController::clock() {
    QFETCH(qint64, now);
    QFETCH(bool, isLoaded);
    time_->jumpWallClock(std::chrono::seconds(now - time_->now().toSecsSinceEpoch()));
    controller_->signInSheetModalForWindow(nullptr, this, [](const auto&, const MaybeError&) {});
    QCOMPARE(controller_->keychainCheckbox()->isVisible(), isLoaded);
    time_->advance(10ms);
    settle();
    QCOMPARE(view().loads.size(), isLoaded ? 1 : 0);
    QCOMPARE(view().htmls.size(), isLoaded ? 0 : 1);
    if (!isLoaded) {
        QVERIFY(view().htmls.front().startsWith(u"<html><body><div align=center><font size='7'>&"_s));
        QVERIFY(view().htmls.front().contains(u"<i>System Clock Incorrect</i><br>"_s +
                                              time_->now().toString(u"yyyy-MM-dd"_s)));
    }
}

void TestGTMOAuth2WindowController::initialHTMLComesFirst() {
    controller_->setInitialHTMLString(u"<p>Wait</p>"_s);
    controller_->signInSheetModalForWindow(nullptr, this, [](const auto&, const MaybeError&) {});
    QCOMPARE(view().htmls, QStringList{u"<p>Wait</p>"_s});
    QVERIFY(view().loads.isEmpty());
    time_->advance(10ms);
    QCOMPARE(view().loads.size(), 1);
}

void TestGTMOAuth2WindowController::cookies_data() {
    QTest::addColumn<bool>("persists");
    QTest::newRow("the account's") << true;
    QTest::newRow("private") << false;
}

void TestGTMOAuth2WindowController::cookies() {
    QFETCH(bool, persists);
    controller_->setShouldPersistUser(persists);
    start();
    QCOMPARE(view().profile.account, persists ? u"me"_s : QString());
    view().addCookie("sid=1; domain=accounts.test; path=/");
    QCOMPARE(controller_->cookieStorage().cookiesForURL(QUrl(u"https://accounts.test/"_s)).size(), persists ? 0 : 1);
    controller_->closeWindow();
    time_->advance(100ms);
    QVERIFY(controller_->cookieStorage().cookies().isEmpty());
}

void TestGTMOAuth2WindowController::newWindowsOpenElsewhere() {
    const QUrl help(u"https://help.test/"_s);
    start();
    view().requestNewWindow(help);
    QCOMPARE(opener_->opened(), QList<QUrl>{help});
    std::vector<QUrl> given;
    controller_->setExternalRequestSelector(
        [&given](const auto&, const URLRequest& request) { given.push_back(request.url); });
    view().requestNewWindow(help);
    QCOMPARE(given, std::vector<QUrl>{help});
    QCOMPARE(opener_->opened().size(), 1);
}

void TestGTMOAuth2WindowController::pageThatDoesNotComeIsTriedAgain() {
    start();
    time_->advance(SignInPage::loadLimit - 1ms);
    QVERIFY(!window().showsMessage());
    time_->advance(1ms);
    QVERIFY(window().showsMessage());
    QVERIFY(window().messageText().contains(controller_->initialRequest()->url.host()));
    QCOMPARE(view().stops, 1);
    window().tryAgainButton()->click();
    settle();
    QVERIFY(!window().showsMessage());
    QCOMPARE(view().loads.size(), 2);
    view().fail(Error(URLErrorCode::cannotFindHost, {{errorKey::reason, u"Not found."_s}}));
    QCOMPARE(window().messageText(), u"Not found."_s);
    QVERIFY(outcomes_.empty());
    window().tryAgainButton()->click();
    settle();
    view().finish(u"Success code=abc"_s);
    settle();
    QVERIFY(succeeded());
}

void TestGTMOAuth2WindowController::missingEngineIsExplained() {
    webViews_->unavailable = u"Install the engine."_s;
    start();
    QVERIFY(window().showsMessage());
    QCOMPARE(window().messageText(), u"Install the engine."_s);
    webViews_->unavailable.clear();
    window().tryAgainButton()->click();
    settle();
    QCOMPARE(view().loads.size(), 1);
}

void TestGTMOAuth2WindowController::lostNetworkIsShown() {
    start();
    view().fail();
    network_->change(false);
    time_->advance(controller_->networkLossTimeoutInterval());
    QVERIFY(!window().notice().isEmpty());
    network_->change(true);
    QVERIFY(window().notice().isEmpty());
    QCOMPARE(view().loads.size(), 2); // what had failed is tried again by itself
}

void TestGTMOAuth2WindowController::sheetBelongsToItsWindow() {
    QWidget parent;
    parent.show();
    start(&parent);
    QCOMPARE(window().parentWidget(), &parent);
    QCOMPARE(window().windowModality(), Qt::WindowModal);
    QVERIFY(controller_->preventsApplicationTermination());
    controller_->setShouldAllowApplicationTermination(true);
    QVERIFY(!controller_->preventsApplicationTermination());
    controller_->closeWindow();
    settle();
    QVERIFY(finishedWith(errorDomain::oauth2, -1000));
}

void TestGTMOAuth2WindowController::sheetEndsWithItsWindow() {
    auto parent = std::make_unique<QWidget>();
    parent->show();
    start(parent.get());
    parent.reset();
    settle();
    QVERIFY(finishedWith(errorDomain::oauth2, -1000));
    QVERIFY(!controller_->window());
}

QTEST_MAIN(TestGTMOAuth2WindowController)
#include "tst_GTMOAuth2WindowController.moc"
