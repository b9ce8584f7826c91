#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/OAuth2Error.h"
#include "tests/support/DelegateQueue.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString tokenPath = u"/token"_s;
const QByteArray authorization = "Authorization";

URLRequest requestWithToken(const QByteArray& token) {
    URLRequest request(QUrl(u"https://api.test/x"_s));
    request.headers.set(authorization, "Bearer " + token);
    return request;
}

} // namespace

class TestGTMOAuth2Authentication : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        time_ = std::make_shared<ManualTimeSource>();
        server_ = FakeNetwork();
        tokensIssued_ = 0;
        server_.handler = [this](const URLRequest&) { return tokenReply(); };
        answers_.clear();
        service_ = server_.makeFetcherService(time_);
        auth_ = GTMOAuth2Authentication::authenticationWithServiceProvider(
            u"Google"_s, QUrl(u"https://accounts.test/token"_s), u"urn:x"_s, u"client"_s, u"s3cret"_s, time_);
        auth_->setFetcherService(service_);
        auth_->setRefreshToken(u"refresh-1"_s);
        notifications_ = std::make_unique<QSignalSpy>(auth_.get(), &GTMOAuth2Authentication::notification);
    }

    void refreshIsDue_data() {
        QTest::addColumn<std::chrono::seconds>("length");
        QTest::addColumn<std::chrono::seconds>("later");
        QTest::addColumn<std::chrono::seconds>("clockJump");
        QTest::addColumn<bool>("isDue");
        QTest::newRow("59 s left") << 59s << 0s << 0s << true;
        QTest::newRow("60 s left") << 60s << 0s << 0s << false;
        QTest::newRow("runs down to 60 s") << 3600s << 3540s << 0s << false;
        QTest::newRow("runs down to 59 s") << 3600s << 3541s << 0s << true;
        QTest::newRow("unknown") << 0s << 0s << 0s << true;
        QTest::newRow("clock set back hides nothing") << 3600s << 3541s << -86400s << true;
        QTest::newRow("clock set back costs nothing") << 3600s << 10s << -86400s << false;
        QTest::newRow("clock set forward, or a sleep, refreshes early") << 3600s << 10s << 86400s << true;
    }
    void refreshIsDue() {
        QFETCH(std::chrono::seconds, length);
        QFETCH(std::chrono::seconds, later);
        QFETCH(std::chrono::seconds, clockJump);
        auth_->setKeysForResponseDictionary(
            {{u"access_token"_s, u"t"_s}, {u"expires_in"_s, static_cast<qlonglong>(length.count())}});
        time_->advance(later);
        time_->jumpWallClock(clockJump);
        QTEST(auth_->shouldRefreshAccessToken(), "isDue");
        auth_->setExpirationDate(time_->now().addSecs(59));
        QVERIFY(auth_->shouldRefreshAccessToken());
        auth_->setExpirationDate(time_->now().addSecs(61));
        QVERIFY(!auth_->shouldRefreshAccessToken());
    }

    void tokensWithoutGrantAreNeverRefreshed() {
        auth_->setRefreshToken({});
        QVERIFY(!auth_->shouldRefreshAccessToken());
        QVERIFY(!auth_->canAuthorize());
        auth_->setKeysForResponseString(u"access_token=t&expires_in=10"_s);
        time_->advance(3600s);
        QVERIFY(!auth_->shouldRefreshAccessToken());
        QVERIFY(auth_->canAuthorize());
        QVERIFY(!auth_->primeForRefresh(requestWithToken("t")));
        QCOMPARE(auth_->accessToken(), u"t"_s);
        auth_->setAccessToken({});
        auth_->setCode(u"c"_s);
        QVERIFY(auth_->shouldRefreshAccessToken());
        QVERIFY(!auth_->canAuthorize());
    }

    void requestsAreAuthorized_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("token");
        QTest::addColumn<bool>("allRequests");
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<int>("code");
        QTest::newRow("https") << u"HTTPS://api.test/"_s << u"t"_s << false << QByteArray("Bearer t") << 0;
        QTest::newRow("no token") << u"https://api.test/"_s << QString() << false << QByteArray() << -1001;
        QTest::newRow("http") << u"http://api.test/?code=hidden"_s << u"t"_s << false << QByteArray() << -1004;
        QTest::newRow("http for the local Drive")
            << u"http://127.0.0.1/"_s << u"t"_s << true << QByteArray("Bearer t") << 0;
        QTest::newRow("file") << u"file:///etc/hosts"_s << u"t"_s << false << QByteArray() << 0;
        QTest::newRow("other scheme") << u"ftp://api.test/"_s << u"t"_s << false << QByteArray() << -1004;
    }
    void requestsAreAuthorized() {
        QFETCH(QString, url);
        QFETCH(QString, token);
        QFETCH(bool, allRequests);
        QFETCH(QByteArray, header);
        auth_->setRefreshToken({});
        auth_->setAccessToken(token);
        auth_->setShouldAuthorizeAllRequests(allRequests);
        authorize(url);
        QVERIFY(answers_.empty()); // never from inside the call
        settle();
        QCOMPARE(answers_.size(), 1U);
        const auto& [request, error] = answers_.front();
        QCOMPARE(request.headers.value(authorization), header);
        QCOMPARE(auth_->isAuthorizedRequest(request), !header.isEmpty());
        QTEST(error ? static_cast<int>(error->code()) : 0, "code");
        if (error) {
            QVERIFY(!error->detail(errorKey::request).toString().isEmpty());
            QVERIFY(!error->detail(errorKey::request).toString().contains(u"hidden"_s));
        }
        URLRequest synchronous{QUrl(url)};
        QCOMPARE(auth_->authorizeRequest(synchronous), !header.isEmpty());
        QCOMPARE(synchronous.headers.value(authorization), header);
    }

    void persistenceString_data() {
        QTest::addColumn<QString>("response");
        QTest::addColumn<QString>("persisted");
        QTest::newRow("all") << u"code=c&scope=a%20b&expires_in=60&userID=7&refresh_token=1%2F%2Fr&isVerified=true&"
                                "email=me%40x.y&access_token=a&token_type=Bearer&id_token=i&error=e"_s
                             << u"access_token=a&email=me%40x.y&isVerified=true&refresh_token=1%2F%2Fr&scope=a%20b&"
                                "serviceProvider=Google&userID=7"_s;
        QTest::newRow("access token alone") << u"access_token=a"_s << u"serviceProvider=Google"_s;
    }
    void persistenceString() {
        QFETCH(QString, response);
        auth_->setRefreshToken({});
        auth_->setKeysForResponseString(response);
        QTEST(auth_->persistenceResponseString(), "persisted");
    }

    void persistenceSurvivesTheRoundTrip() {
        auth_->setKeysForResponseString(u"access_token=a%3D&expires_in=3600"_s);
        auth_->setUserEmail(u"gr\u00fc\u00df&e+\U0001F600@x.y"_s);
        const auto restored = GTMOAuth2Authentication::authenticationWithServiceProvider({}, {}, {}, {}, {}, time_);
        restored->setKeysForResponseString(auth_->persistenceResponseString());
        QCOMPARE(restored->persistenceResponseString(), auth_->persistenceResponseString());
        QCOMPARE(restored->userEmail(), auth_->userEmail());
        QCOMPARE(restored->accessToken(), u"a="_s);
        QVERIFY(restored->shouldRefreshAccessToken()); // nobody knows how old the token is
    }

    void changedRefreshTokenIsTold() {
        auth_->setKeysForResponseString(u"access_token=a&refresh_token=refresh-1"_s);
        QCOMPARE(notifications_->size(), 0);
        auth_->setKeysForResponseString(u"access_token=a&refresh_token=refresh-2"_s);
        QCOMPARE(notificationNames(), QStringList{kGTMOAuth2RefreshTokenChanged});
    }

    void requestsWaitForOneRefresh() {
        server_.isHolding = true;
        authorize(u"https://api.test/1"_s);
        authorizeNow(u"http://api.test/2"_s);
        authorizeNow(u"https://api.test/3"_s);
        QCOMPARE(server_.requests.size(), 1U);
        QVERIFY(answers_.empty());
        server_.release();
        settle();
        authorizeNow(u"https://api.test/4"_s);

        QCOMPARE(server_.requests.size(), 1U);
        const URLRequest& tokenRequest = server_.requests.front().request;
        QCOMPARE(tokenRequest.httpMethod, "POST");
        QCOMPARE(tokenRequest.url, auth_->tokenURL());
        QCOMPARE(tokenRequest.headers.value("Content-Type"), "application/x-www-form-urlencoded");
        QVERIFY(!tokenRequest.headers.contains(authorization));
        QCOMPARE(tokenRequest.body,
                 "client_id=client&client_secret=s3cret&grant_type=refresh_token&refresh_token=refresh-1");
        QCOMPARE(answers_.size(), 4U);
        for (size_t index = 0; index < answers_.size(); ++index) {
            const auto& [request, error] = answers_.at(index);
            QCOMPARE(request.url.path(), u'/' + QString::number(index + 1));
            QCOMPARE(request.headers.value(authorization), index == 1 ? QByteArray() : QByteArray("Bearer token-1"));
        }
        QVERIFY(answers_.at(1).second->is(errorDomain::oauth2, -1004));
        QCOMPARE(notificationNames(),
                 (QStringList{kGTMOAuth2FetchStarted, kGTMOAuth2FetchStopped, kGTMOAuth2AccessTokenRefreshed}));
        QCOMPARE(notifications_->at(0).at(1).toMap().value(kGTMOAuth2FetchTypeKey),
                 QVariant(kGTMOAuth2FetchTypeRefresh));
    }

    void fiftyRefusalsLeadToOneRefresh() {
        auth_->setKeysForResponseString(u"access_token=revoked&expires_in=3600"_s);
        server_.handler = [this](const URLRequest& request) -> FakeReply {
            if (request.url.path() == tokenPath)
                return tokenReply();
            const bool isGood = request.headers.value(authorization) == "Bearer token-1";
            return {isGood ? 200 : 401, "body"};
        };
        service_->setMaxRunningFetchersPerHost(0);
        service_->setAuthorizer(auth_);
        int succeeded = 0;
        server_.isHolding = true;
        for (int number = 0; number < 50; ++number)
            service_->fetcherWithRequest(URLRequest(QUrl(u"https://api.test/x"_s)))
                ->beginFetchWithCompletionHandler(this, [&](const QByteArray& data, const MaybeError& error) {
                    succeeded += !error && data == "body";
                });
        settle();
        QCOMPARE(server_.requests.size(), 50U);
        const auto letRetriesRun = [this] {
            settle();
            time_->advance(2s);
            settle();
        };
        server_.isHolding = false;
        for (int number = 0; number < 25; ++number)
            server_.answerWaiting();
        letRetriesRun(); // one of them asks for a new token
        server_.release();
        letRetriesRun(); // the other refusals arrive when it is there already
        QCOMPARE(succeeded, 50);
        QCOMPARE(server_.requestsTo(tokenPath), 1);
    }

    void replacedTokenIsNotForgotten() {
        auth_->setKeysForResponseString(u"access_token=new&expires_in=3600"_s);
        QVERIFY(auth_->primeForRefresh(requestWithToken("old")));
        QCOMPARE(auth_->accessToken(), u"new"_s);
        QVERIFY(auth_->primeForRefresh(requestWithToken("new")));
        QCOMPARE(auth_->accessToken(), QString());
    }

    void failedRefresh_data() {
        QTest::addColumn<int>("status"); // 0: the network
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("isRefused");
        QTest::newRow("refused") << 400 << QByteArray(R"({"error":"invalid_grant"})") << errorDomain::httpStatus << 400
                                 << true;
        QTest::newRow("server error") << 500 << QByteArray("oops") << errorDomain::httpStatus << 500 << false;
        QTest::newRow("network") << 0 << QByteArray() << errorDomain::url << -1003 << false;
        QTest::newRow("no access token") << 200 << QByteArray("{}") << errorDomain::oauth2 << -1001 << false;
    }
    void failedRefresh() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, domain);
        QFETCH(int, code);
        QFETCH(bool, isRefused);
        server_.handler = [&](const URLRequest&) -> FakeReply {
            return {status, body, "application/json", {}, status ? MaybeError() : Error(URLErrorCode::cannotFindHost)};
        };
        for (int number = 0; number < 3; ++number)
            authorize(u"https://api.test/"_s);
        settle();
        QCOMPARE(server_.requests.size(), 1U);
        QCOMPARE(answers_.size(), 3U);
        for (const auto& [request, error] : answers_) {
            QVERIFY(error && error->is(domain, code));
            QVERIFY(!auth_->isAuthorizedRequest(request));
            QVERIFY(!error->description().contains(u"refresh-1"_s));
        }
        QCOMPARE(auth_->lastRefreshFailure(), isRefused ? RefreshFailure::refused : RefreshFailure::momentary);
        QCOMPARE(auth_->refreshToken(), u"refresh-1"_s); // nothing is forgotten
        const QVariantMap failure = notifications_->last().at(1).toMap();
        QCOMPARE(notificationNames().last(), kGTMOAuth2AccessTokenRefreshFailed);
        QCOMPARE(failure.value(u"error"_s).toString(), isRefused ? u"invalid_grant"_s : QString());
        QCOMPARE(failure.contains(kGTMOAuth2ErrorObjectKey), isRefused);

        server_.handler = [this](const URLRequest&) { return tokenReply(); };
        authorizeNow(u"https://api.test/"_s);
        QVERIFY(!answers_.back().second);
        QCOMPARE(auth_->lastRefreshFailure(), RefreshFailure::none);
    }

    void tokenInItsLastMinuteOutlivesAMomentaryFailure() {
        auth_->setKeysForResponseString(u"access_token=short&expires_in=50"_s);
        server_.handler = [](const URLRequest&) { return FakeReply{500}; };
        authorizeNow(u"https://api.test/1"_s);
        QVERIFY(!answers_.back().second);
        QCOMPARE(answers_.back().first.headers.value(authorization), "Bearer short");
        time_->advance(50s); // and then it is over
        authorizeNow(u"https://api.test/2"_s);
        QVERIFY(answers_.back().second && answers_.back().second->isHTTPStatus(500));
    }

    void stoppedRequestsAreNotAnswered() {
        server_.isHolding = true;
        const CompletionTicket first = authorize(u"https://api.test/1"_s);
        authorize(u"https://api.test/2"_s);
        QVERIFY(auth_->isAuthorizingRequest(first));
        auth_->stopAuthorizationForRequest(first);
        QVERIFY(!auth_->isAuthorizingRequest(first));
        server_.release();
        settle();
        QCOMPARE(answers_.size(), 1U);
        QCOMPARE(answers_.front().first.url.path(), u"/2"_s);

        auth_->primeForRefresh(answers_.front().first);
        server_.isHolding = true;
        const CompletionTicket third = authorize(u"https://api.test/3"_s);
        settle();
        auth_->stopAuthorization();
        QVERIFY(!auth_->refreshFetcher() && !auth_->isAuthorizingRequest(third));
        server_.release();
        settle();
        QCOMPARE(answers_.size(), 1U);
        QCOMPARE(notificationNames().count(kGTMOAuth2FetchStarted), notificationNames().count(kGTMOAuth2FetchStopped));
        authorizeNow(u"https://api.test/4"_s);
        QCOMPARE(answers_.size(), 2U);
    }

    void resetEndsARunningRefresh() {
        server_.isHolding = true;
        MaybeError exchangeError;
        const auto exchange = auth_->beginTokenFetchWithDelegate(
            this, [&](const auto&, const auto&, const MaybeError& error) { exchangeError = error; });
        QVERIFY(exchange);
        authorizeNow(u"https://api.test/"_s);
        auth_->reset();
        settle();
        QVERIFY(answers_.size() == 1 && answers_.front().second->is(errorDomain::oauth2, -1001));
        server_.release();
        settle();
        QVERIFY(exchangeError && exchangeError->is(errorDomain::oauth2, -1001));
        QVERIFY(auth_->parameters().isEmpty()); // the late answer signs nobody in again
    }

    void tokenFetchIsNotQueuedBehindItsWaiters() {
        service_->setMaxRunningFetchersPerHost(1);
        service_->setAuthorizer(auth_);
        bool done = false;
        service_->fetcherWithRequest(URLRequest(QUrl(u"https://accounts.test/api"_s)))
            ->beginFetchWithCompletionHandler(this,
                                              [&done](const QByteArray&, const MaybeError& error) { done = !error; });
        settle();
        QVERIFY(done);
    }

    void otherThreadsAreAnsweredOnTheirOwn() {
        DelegateQueue elsewhere;
        std::atomic<QThread*> answeredOn{};
        QMetaObject::invokeMethod(elsewhere.object(), [&] {
            auth_->authorizeRequest(URLRequest(QUrl(u"https://api.test/"_s)), elsewhere.object(),
                                    [&](const URLRequest& request, const MaybeError&) {
                                        if (auth_->isAuthorizedRequest(request))
                                            answeredOn = QThread::currentThread();
                                    });
        });
        QTRY_COMPARE(answeredOn.load(), elsewhere.thread());
    }

    void descriptionHoldsNoSecret() {
        auth_->setKeysForResponseString(u"access_token=hidden-a&refresh_token=hidden-r&code=hidden-c"_s);
        auth_->setClientSecret(u"hidden-s"_s);
        QVERIFY(auth_->description().contains(u"Google"_s));
        QVERIFY2(!auth_->description().contains(u"hidden"_s), qPrintable(auth_->description()));
    }

private:
    CompletionTicket authorize(const QString& url) {
        return auth_->authorizeRequest(
            URLRequest(QUrl(url)), this,
            [this](const URLRequest& request, const MaybeError& error) { answers_.emplace_back(request, error); });
    }

    void authorizeNow(const QString& url) {
        authorize(url);
        settle();
    }

    FakeReply tokenReply() {
        const QByteArray number = QByteArray::number(++tokensIssued_);
        return {200, QByteArray(R"({"access_token":"token-N","expires_in":3600})").replace('N', number)};
    }

    QStringList notificationNames() const {
        QStringList names;
        for (const auto& arguments : *notifications_)
            names.append(arguments.first().toString());
        return names;
    }

    std::shared_ptr<ManualTimeSource> time_;
    FakeNetwork server_;
    std::shared_ptr<GTMHTTPFetcherService> service_;
    std::shared_ptr<GTMOAuth2Authentication> auth_;
    std::unique_ptr<QSignalSpy> notifications_;
    std::vector<std::pair<URLRequest, MaybeError>> answers_;
    int tokensIssued_ = 0;
};

QTEST_GUILESS_MAIN(TestGTMOAuth2Authentication)
#include "tst_GTMOAuth2Authentication.moc"
