#include "oauth2/AuthorizationRequest.h"
#include "oauth2/GTMOAuth2SignIn.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/ProofKey.h"
#include "tests/oauth2/FakeReachability.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QSignalSpy>
#include <QTest>
#include <QUrlQuery>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestGTMOAuth2SignIn : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        time_ = std::make_shared<ManualTimeSource>();
        network_ = std::make_shared<FakeReachability>();
        server_ = FakeNetwork();
        tokenBody_ = R"({"access_token":"token","refresh_token":"refresh","expires_in":3600})";
        userInfoBody_ = R"({"sub":"77","email":"me@example.com","email_verified":true,"name":"Me"})";
        server_.handler = [this](const URLRequest& request) -> FakeReply {
            return {200, request.url == endpoints_.userInfoURL ? userInfoBody_ : tokenBody_};
        };
        makeSignIn();
    }

    void standardAuthentication_data() {
        QTest::addColumn<bool>("isLocal");
        QTest::newRow("provider") << false;
        QTest::newRow("local Drive") << true;
    }
    void standardAuthentication() {
        QFETCH(bool, isLocal);
        const Endpoints endpoints =
            isLocal ? Endpoints::localDrive(QUrl(u"http://127.0.0.1:4711"_s)) : Endpoints::provider();
        const auto auth =
            GTMOAuth2SignIn::standardGoogleAuthenticationForScope(u"s"_s, u"id"_s, u"secret"_s, endpoints, time_);
        QCOMPARE(auth->serviceProvider(), u"Google"_s);
        QCOMPARE(auth->tokenURL(), endpoints.tokenURL);
        QCOMPARE(auth->redirectURI(), u"urn:ietf:wg:oauth:2.0:oob"_s);
        QCOMPARE(auth->scope(), u"s"_s);
        QCOMPARE(auth->shouldAuthorizeAllRequests(), isLocal);
        const auto fetchesEmail = [&](const QUrl& authorizationURL) {
            return GTMOAuth2SignIn(auth, authorizationURL, this, {}, {}, SignInEnvironment{endpoints, time_, network_})
                .shouldFetchGoogleUserEmail();
        };
        QVERIFY(fetchesEmail(endpoints.authorizationURL));
        QVERIFY(!fetchesEmail(QUrl(u"https://provider.test/auth"_s)));
    }

    void authorizationRequest() {
        signIn_->setShouldFetchGoogleUserProfile(true);
        signIn_->setAdditionalAuthorizationParameters({{u"hl"_s, u"en"_s}, {u"response_type"_s, u"code token"_s}});
        QVERIFY(signIn_->startSigningIn());
        QCOMPARE(pages_.size(), 1U);
        const QUrl& url = pages_.front()->url;
        QCOMPARE(url.adjusted(QUrl::RemoveQuery), endpoints_.authorizationURL);
        QVERIFY(url.query(QUrl::FullyEncoded).startsWith(u"client_id=client&hl=en&redirect_uri=urn%3Aietf"_s));
        QCOMPARE(query(u"scope"_s),
                 QString(u"drive "_s + endpoints_.emailScope + QLatin1Char(' ') + endpoints_.profileScope));
        QCOMPARE(query(u"response_type"_s), u"code token"_s);
        QVERIFY(!url.query().contains(u"s3cret"_s));
        const QString scope = auth_->scope();
        signIn_->startSigningIn();
        QCOMPARE(auth_->scope(), scope); // nothing is added twice
    }

    void nothingStartsWithoutAClient() {
        auth_->setClientID({});
        QVERIFY(!signIn_->startSigningIn());
        makeSignIn({});
        QVERIFY(!signIn_->startSigningIn());
        QVERIFY(pages_.empty() && !network_->isWatched());
    }

    void titleCompletesTheSignIn() {
        QSignalSpy signInNotifications(signIn_.get(), &GTMOAuth2SignIn::notification);
        QSignalSpy authNotifications(auth_.get(), &GTMOAuth2Authentication::notification);
        signIn_->startSigningIn();
        QVERIFY(!signIn_->titleChanged(u"Sign in"_s));
        QVERIFY(!signIn_->requestRedirectedToRequest(URLRequest(QUrl(GTMOAuth2SignIn::nativeClientRedirectURI()))));
        QVERIFY(signIn_->titleChanged(u"Success code=4%2Fcode"_s));
        QVERIFY(pages_.size() == 2 && !pages_.back());
        QVERIFY(!network_->isWatched());
        QCOMPARE(signInNotifications.count(), 1);
        QCOMPARE(signInNotifications.first().first(), QVariant(kGTMOAuth2UserSignedIn));
        signIn_->windowWasClosed(); // as the closing page reports it
        QVERIFY(outcomes_.empty());
        settle();

        QVERIFY(succeeded());
        QCOMPARE(server_.requests.size(), 2U);
        QVERIFY(server_.requests.at(0).body.contains("code=4%2Fcode&grant_type=authorization_code"));
        const URLRequest& userInfoRequest = server_.requests.at(1).request;
        QCOMPARE(userInfoRequest.headers.value("Authorization"), "Bearer token");
        QCOMPARE(userInfoRequest.headers.value("Cache-Control"), "no-cache");
        QCOMPARE(auth_->refreshToken(), u"refresh"_s);
        QCOMPARE(auth_->userEmail(), u"me@example.com"_s);
        QStringList fetches;
        for (const auto& arguments : authNotifications) {
            if (arguments.first() == kGTMOAuth2FetchStarted || arguments.first() == kGTMOAuth2FetchStopped)
                fetches.append(arguments.at(1).toMap().value(kGTMOAuth2FetchTypeKey).toString());
        }
        QCOMPARE(fetches, (QStringList{u"token"_s, u"token"_s, u"userInfo"_s, u"userInfo"_s}));
    }

    void redirectCompletesTheSignIn() {
        makeSignIn(u"http://localhost/done"_s);
        signIn_->startSigningIn();
        QVERIFY(!signIn_->titleChanged(u"Success code=c"_s)); // a page's title proves nothing here
        QVERIFY(!signIn_->requestRedirectedToRequest(URLRequest(QUrl(u"https://elsewhere.test/done?code=c"_s))));
        QVERIFY(
            signIn_->requestRedirectedToRequest(URLRequest(QUrl(u"http://localhost/done?code=c&access_token=x"_s))));
        QCOMPARE(auth_->accessToken(), QString());
        settle();
        QVERIFY(succeeded());
        QCOMPARE(auth_->accessToken(), u"token"_s);
    }

    void secondAnswerStartsNothing() {
        makeSignIn(u"http://localhost/done"_s);
        signIn_->startSigningIn();
        const URLRequest answer(QUrl(u"http://localhost/done?code=c"_s));
        for (int time = 0; time < 3; ++time) {
            QVERIFY(signIn_->requestRedirectedToRequest(answer));
            QVERIFY(signIn_->loadFailedWithError(
                Error(URLErrorCode::cancelled, {{errorKey::failingURL, QUrl(u"http://localhost/done?code=c"_s)}})));
            settle();
        }
        QVERIFY(succeeded());
        QCOMPARE(server_.requestsTo(endpoints_.tokenURL.path()), 1);
        QCOMPARE(pages_.size(), 2U);
    }

    void providerErrorEndsTheSignIn() {
        signIn_->startSigningIn();
        QVERIFY(signIn_->titleChanged(u"Denied error=access_denied"_s));
        QVERIFY(outcomes_.empty()); // never from inside the call
        settle();
        QVERIFY(finishedWith(errorDomain::oauth2, -1001));
        QCOMPARE(outcomes_.front()->detail(errorKey::error), QVariant(u"access_denied"_s));
        QVERIFY(server_.requests.empty());
    }

    void failedLoadOfTheRedirectEndsTheSignIn() {
        makeSignIn(u"http://localhost/done"_s);
        signIn_->startSigningIn();
        const auto failureOf = [](const QString& url) {
            return Error(URLErrorCode::cannotConnectToHost, {{errorKey::failingURL, QUrl(url)}});
        };
        QVERIFY(!signIn_->loadFailedWithError(failureOf(u"https://accounts.test/"_s)));
        QVERIFY(!signIn_->loadFailedWithError(Error(URLErrorCode::timedOut)));
        QVERIFY(signIn_->loadFailedWithError(failureOf(u"http://localhost/done"_s)));
        settle();
        QVERIFY(finishedWith(errorDomain::url, static_cast<int>(URLErrorCode::cannotConnectToHost)));
        QVERIFY(!pages_.back());
    }

    void closedWindowEndsTheSignInOnce() {
        signIn_->startSigningIn();
        signIn_->windowWasClosed();
        signIn_->windowWasClosed();
        QVERIFY(!network_->isWatched());
        signIn_->titleChanged(u"Success code=late"_s);
        settle();
        QVERIFY(server_.requests.empty());
        QVERIFY(finishedWith(errorDomain::oauth2, -1000));
    }

    void cancelledSignInTellsNothing() {
        server_.isHolding = true;
        signIn_->startSigningIn();
        signIn_->titleChanged(u"Success code=c"_s);
        settle();
        signIn_->cancelSigningIn();
        signIn_->windowWasClosed();
        server_.release();
        settle();
        QVERIFY(outcomes_.empty());
        QVERIFY(!signIn_->pendingFetcher());
        QVERIFY(!pages_.back());
        QCOMPARE(auth_->accessToken(), QString());

        makeSignIn();
        signIn_->startSigningIn();
        signIn_->titleChanged(u"Denied error=access_denied"_s);
        signIn_->cancelSigningIn(); // with the outcome on its way
        settle();
        QVERIFY(outcomes_.empty());
    }

    void failedExchange_data() {
        QTest::addColumn<QString>("tokenURL");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<int>("code");
        QTest::newRow("refused") << u"https://a.test/t"_s << 400 << QByteArray(R"({"error":"invalid_grant"})")
                                 << errorDomain::httpStatus << 400;
        QTest::newRow("no token") << u"https://a.test/t"_s << 200 << QByteArray("{}") << errorDomain::oauth2 << -1001;
        QTest::newRow("insecure address")
            << u"http://a.test/t"_s << 200 << QByteArray("{}") << errorDomain::httpStatus << -1;
        QTest::newRow("no address") << QString() << 200 << QByteArray("{}") << errorDomain::httpStatus << -1;
    }
    void failedExchange() {
        QFETCH(QString, tokenURL);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, domain);
        QFETCH(int, code);
        auth_->setTokenURL(QUrl(tokenURL));
        server_.handler = [&](const URLRequest&) { return FakeReply{status, body}; };
        signIn_->startSigningIn();
        signIn_->titleChanged(u"Success code=hidden-code"_s);
        settle();
        QVERIFY(finishedWith(domain, code));
        QVERIFY(!outcomes_.front()->description().contains(u"hidden"_s));
        QCOMPARE(outcomes_.front()->details().contains(errorKey::json),
                 !tokenURL.startsWith(u"http:"_s) && !tokenURL.isEmpty());
    }

    void userInfo_data() {
        QTest::addColumn<QByteArray>("claims"); // of an identity token; empty: none came
        QTest::addColumn<bool>("wantsProfile");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("email"); // empty: an error
        QTest::addColumn<QString>("isVerified");
        const QByteArray claims = R"({"sub":"1","email":"token@example.com","email_verified":"true"})";
        const QByteArray answer = R"({"sub":"2","email":"info@example.com","email_verified":false})";
        const QString fromToken = u"token@example.com"_s;
        const QString fromEndpoint = u"info@example.com"_s;
        QTest::newRow("identity token") << claims << false << answer << fromToken << u"true"_s;
        QTest::newRow("profile needs the endpoint") << claims << true << answer << fromEndpoint << u"false"_s;
        QTest::newRow("no identity token") << QByteArray() << false << answer << fromEndpoint << u"false"_s;
        QTest::newRow("unreadable answer") << QByteArray() << false << QByteArray("<html>") << QString() << QString();
    }
    void userInfo() {
        QFETCH(QByteArray, claims);
        QFETCH(bool, wantsProfile);
        QFETCH(QByteArray, answer);
        QFETCH(QString, email);
        const QByteArray part = claims.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
        tokenBody_.replace("}", R"(,"id_token":"h.%1.s"})").replace("%1", part);
        userInfoBody_ = answer;
        signIn_->setShouldFetchGoogleUserProfile(wantsProfile);
        signIn_->startSigningIn();
        signIn_->titleChanged(u"Success code=c"_s);
        settle();
        QCOMPARE(outcomes_.size(), 1U);
        QCOMPARE(outcomes_.front().has_value(), email.isEmpty());
        QCOMPARE(auth_->userEmail(), email);
        QTEST(auth_->userEmailIsVerified(), "isVerified");
        QCOMPARE(signIn_->userProfile().value(u"email"_s).toString(), email);
        QCOMPARE(server_.requestsTo(endpoints_.userInfoURL.path()), email.startsWith(u"token"_s) ? 0 : 1);
        QCOMPARE(auth_->refreshToken(), u"refresh"_s); // the tokens stay in any case
    }

    void proofKeyAndStateTravelAlong() {
        signIn_->setUsesPKCE(true);
        signIn_->setState(u"st&te"_s);
        signIn_->startSigningIn();
        QCOMPARE(query(u"state"_s), u"st&te"_s);
        QCOMPARE(query(u"code_challenge_method"_s), u"S256"_s);
        signIn_->titleChanged(u"Success state=st%26te&code=c"_s);
        settle();
        QVERIFY(succeeded());
        const auto form = oauth2::dictionaryWithResponseData(server_.requests.front().body);
        QCOMPARE(oauth2::codeChallengeForVerifier(form.value(u"code_verifier"_s)), query(u"code_challenge"_s));
    }

    void answerWithAnotherStateIsRefused() {
        signIn_->setState(u"mine"_s);
        signIn_->startSigningIn();
        QVERIFY(signIn_->titleChanged(u"Success state=other&code=c"_s));
        settle();
        QVERIFY(finishedWith(errorDomain::oauth2, -1001));
        QCOMPARE(auth_->code(), QString());
        QVERIFY(server_.requests.empty());
    }

    void lostNetworkIsTold() {
        QSignalSpy notifications(signIn_.get(), &GTMOAuth2SignIn::notification);
        signIn_->startSigningIn();
        QCOMPARE(network_->host(), endpoints_.authorizationURL.host());
        network_->change(false);
        time_->advance(29s);
        QCOMPARE(notifications.count(), 0);
        time_->advance(1s);
        QVERIFY(signIn_->hasNotifiedNetworkLoss());
        network_->change(true);
        QCOMPARE(notifications.count(), 2);
        QCOMPARE(notifications.at(0).first(), QVariant(kGTMOAuthNetworkLost));
        QCOMPARE(notifications.at(1).first(), QVariant(kGTMOAuthNetworkFound));
    }

    void revocation_data() {
        QTest::addColumn<QString>("refreshToken");
        QTest::addColumn<QString>("provider");
        QTest::addColumn<bool>("isSent");
        QTest::newRow("signed in") << u"1//r+t"_s << u"Google"_s << true;
        QTest::newRow("no refresh token") << QString() << u"Google"_s << false;
        QTest::newRow("another provider") << u"r"_s << u"Other"_s << false;
    }
    void revocation() {
        QFETCH(QString, refreshToken);
        QFETCH(QString, provider);
        QFETCH(bool, isSent);
        auth_->setKeysForResponseString(u"access_token=a&expires_in=3600"_s);
        auth_->setRefreshToken(refreshToken);
        auth_->setServiceProvider(provider);
        auth_->setUserAgent("agent/1");
        GTMOAuth2SignIn::revokeTokenForGoogleAuthentication(*auth_, endpoints_);
        QVERIFY(auth_->parameters().isEmpty());
        QVERIFY(!auth_->expirationDate());
        settle();
        QCOMPARE(server_.requests.size(), isSent ? 1U : 0U);
        if (!isSent)
            return;
        const URLRequest& request = server_.requests.front().request;
        QCOMPARE(request.url, endpoints_.revocationURL);
        QCOMPARE(request.httpMethod, "POST");
        QCOMPARE(request.body, "token=1%2F%2Fr%2Bt");
        QCOMPARE(request.headers.value("User-Agent"), "agent/1");
        QCOMPARE(request.headers.value("Content-Type"), "application/x-www-form-urlencoded");
    }

private:
    // A sign-in at the given accounts host, not yet started.
    void makeSignIn(const QString& redirectURI = GTMOAuth2SignIn::nativeClientRedirectURI()) {
        pages_.clear();
        outcomes_.clear();
        auth_ = GTMOAuth2SignIn::standardGoogleAuthenticationForScope(u"drive"_s, u"client"_s, u"s3cret"_s, endpoints_,
                                                                      time_);
        service_ = server_.makeFetcherService(time_);
        auth_->setFetcherService(service_);
        auth_->setRedirectURI(redirectURI);
        signIn_ = std::make_unique<GTMOAuth2SignIn>(
            auth_, endpoints_.authorizationURL, this,
            [this](GTMOAuth2SignIn&, const std::optional<URLRequest>& page) { pages_.push_back(page); },
            [this](GTMOAuth2SignIn&, const auto& auth, const MaybeError& error) {
                QCOMPARE(auth, auth_);
                outcomes_.push_back(error);
            },
            SignInEnvironment{endpoints_, time_, network_});
    }

    QString query(const QString& key) const {
        return QUrlQuery(pages_.front()->url).queryItemValue(key, QUrl::FullyDecoded);
    }
    bool finishedWith(const QString& domain, qint64 code) const {
        return outcomes_.size() == 1 && outcomes_.front() && outcomes_.front()->is(domain, code);
    }
    bool succeeded() const { return outcomes_.size() == 1 && !outcomes_.front(); }

    const Endpoints endpoints_ = Endpoints::provider();
    std::shared_ptr<ManualTimeSource> time_;
    std::shared_ptr<FakeReachability> network_;
    FakeNetwork server_;
    std::shared_ptr<GTMHTTPFetcherService> service_;
    std::shared_ptr<GTMOAuth2Authentication> auth_;
    std::unique_ptr<GTMOAuth2SignIn> signIn_;
    std::vector<std::optional<URLRequest>> pages_; // what the delegate was asked to show; nothing: to close
    std::vector<MaybeError> outcomes_;
    QByteArray tokenBody_;
    QByteArray userInfoBody_;
};

QTEST_GUILESS_MAIN(TestGTMOAuth2SignIn)
#include "tst_GTMOAuth2SignIn.moc"
