// The sign-in by the browser, at the real local Drive; the test plays the browser, and whoever else reaches the port.

#include "app/account/DriveConnection.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/browser/BrowserSignIn.h"
#include "oauth2/browser/LoopbackListener.h"
#include "tests/oauth2/browser/ListeningPorts.h"
#include "tests/oauth2/browser/PlayedSignIn.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/support/LocalDriveProcess.h"
#include "tests/support/ManualTimeSource.h"

#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>
#include <QUrlQuery>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60'000; // ms; only a hang takes so long

QStringList logged;

// One connection to the sign-in's port.
class Visitor {
public:
    explicit Visitor(quint16 port) {
        socket_.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        (void)QTest::qWaitFor([this] { return isConnected() || isRefused(); }, patiently);
    }
    bool isConnected() const { return socket_.state() == QAbstractSocket::ConnectedState; }
    bool isRefused() const { return socket_.error() == QAbstractSocket::ConnectionRefusedError; }
    void send(const QByteArray& bytes) {
        socket_.write(bytes);
        socket_.flush();
    }
    // All that comes until the other end closes; null when it does not.
    QByteArray reply() {
        return QTest::qWaitFor([this] { return !isConnected(); }, patiently) ? socket_.readAll() : QByteArray();
    }
    bool hasEnded() const { return !isConnected(); }

private:
    QTcpSocket socket_;
};

} // namespace

class BrowserSignInTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(local_.start(), local_.log().constData()); }
    void init() {
        drive_ = std::make_unique<DriveConnection>(Endpoints::localDrive(local_.url()),
                                                   ClientIdentity{u"browser test"_s, u"s3cret"_s},
                                                   makeSystemTimeSource(), nullptr);
        opener_.emplace();
        outcomes_.clear();
        start();
    }
    void cleanup() {
        signIn_.reset();
        QVERIFY(listeningPorts().isEmpty());
    }

    void signsIn() {
        logged.clear();
        QLoggingCategory::setFilterRules(u"quenby.*=true"_s);
        const auto former =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& line) { logged += line; });
        const QList<ListeningPort> ports = listeningPorts();
        const QUrl page = signIn_->pageAddress();
        QSignalSpy answered(signIn_.get(), &BrowserSignIn::answered);
        const QUrl answer = allowed(page);
        const PlayedPage end = browser_.get(answer);
        const bool isFinished = QTest::qWaitFor([this] { return !outcomes_.isEmpty(); }, patiently);
        qInstallMessageHandler(former);
        QLoggingCategory::setFilterRules({});

        QVERIFY(isFinished);
        QVERIFY2(!outcomes_.first(), qPrintable(outcomes_.first() ? outcomes_.first()->description() : QString()));
        QVERIFY(authentication_->canAuthorize() && !authentication_->refreshToken().isEmpty());
        QCOMPARE(authentication_->userEmail(), email_);
        QCOMPARE(answered.size(), 1);
        QCOMPARE(opener_->opened(), QList<QUrl>{page});
        QCOMPARE(ports.size(), 1);
        QVERIFY(ports.first().isLoopbackOnly);
        QVERIFY(listeningPorts().isEmpty());

        const QUrlQuery asked(page);
        QCOMPARE(asked.queryItemValue(u"redirect_uri"_s, QUrl::FullyDecoded),
                 u"http://127.0.0.1:%1"_s.arg(ports.first().port));
        QCOMPARE(asked.queryItemValue(u"code_challenge_method"_s), u"S256"_s);
        const QString state = asked.queryItemValue(u"state"_s);
        QVERIFY(state.size() >= 22); // 128 bits in base64
        QVERIFY(state != asked.queryItemValue(u"code_challenge"_s));

        QCOMPARE(end.status, 200);
        QVERIFY(end.body.contains("You can close this page and return to Quenby."));
        QCOMPARE(end.header("Cache-Control"), "no-store");
        QCOMPARE(end.header("Referrer-Policy"), "no-referrer");
        QVERIFY(end.header("Content-Security-Policy").contains("default-src 'none'"));
        const QString code = QUrlQuery(answer).queryItemValue(u"code"_s, QUrl::FullyDecoded);
        QVERIFY(code.size() > 10);
        for (const QString& secret : {code, state}) {
            QVERIFY(!end.body.contains(secret.toUtf8()));
            QVERIFY2(!logged.join(u'\n').contains(secret), qPrintable(logged.join(u'\n')));
        }
        // Ended, it lets go of what it made: a later cancel takes nothing from the sign-in.
        QVERIFY(!signIn_->openPageAgain() && signIn_->pageAddress().isEmpty());
        signIn_->cancel();
        QVERIFY(authentication_->canAuthorize());
    }

    void twoAtOnceDoNotMix() {
        const auto otherAuthentication = drive_->makeAuthentication();
        FakeOpener otherOpener;
        BrowserSignIn other(otherAuthentication, drive_->endpoints().authorizationURL, otherOpener, environment());
        QList<MaybeError> otherOutcomes;
        other.signIn(this, [&](const auto&, const MaybeError& error) { otherOutcomes.append(error); });
        QVERIFY(state(other.pageAddress()) != state(signIn_->pageAddress()));
        // The other's code with this one's state: somebody wants to have the user signed in as himself.
        const QString code = QUrlQuery(allowed(other.pageAddress())).queryItemValue(u"code"_s, QUrl::FullyDecoded);
        QCOMPARE(browser_.get(answerWith("code=" + code.toUtf8().toPercentEncoding())).status, 200);
        QTRY_VERIFY_WITH_TIMEOUT(!outcomes_.isEmpty(), patiently);
        QVERIFY(outcomes_.first() && !authentication_->canAuthorize());
        QVERIFY(!outcomes_.first()->description().contains(code));
        QVERIFY(otherOutcomes.isEmpty());
    }

    void strangers_data() {
        QTest::addColumn<QByteArray>("request"); // HOST, PORT and STATE stand for this sign-in's
        QTest::addColumn<int>("status");
        const auto row = [](const char* title, const QByteArray& request, int status) {
            QTest::newRow(title) << request << status;
        };
        const auto get = [](const QByteArray& target, const QByteArray& host = "HOST") {
            return QByteArray("GET " + target + " HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
        };
        const QByteArray answer = "/?code=c&state=STATE";
        row("a look at the port", get("/"), 400);
        row("no state", get("/?code=c"), 400);
        row("an empty state", get("/?code=c&state="), 400);
        row("another state", get("/?code=c&state=AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"), 400);
        row("the state and more", get(answer + "A"), 400);
        row("two states", get(answer + "&state=STATE"), 400);
        row("two codes", get(answer + "&code=d"), 400);
        row("code and error", get(answer + "&error=access_denied"), 400);
        row("neither", get("/?state=STATE"), 400);
        row("an empty code", get("/?code=&state=STATE"), 400);
        row("an icon", get("/favicon.ico"), 404);
        row("another path", get("/callback?code=c&state=STATE"), 404);
        row("a path that is none", get("//?code=c&state=STATE"), 404);
        row("another host", get(answer, "evil.example:PORT"), 421);
        row("another name of this computer", get(answer, "localhost:PORT"), 421);
        row("no port", get(answer, "127.0.0.1"), 421);
        row("two hosts", "GET " + answer + " HTTP/1.1\r\nHost: HOST\r\nHost: evil.example\r\n\r\n", 421);
        row("no host", "GET " + answer + " HTTP/1.1\r\nAccept: */*\r\n\r\n", 421);
        row("POST", "POST " + answer + " HTTP/1.1\r\nHost: HOST\r\nContent-Length: 3\r\n\r\na=b", 405);
        row("HEAD", "HEAD " + answer + " HTTP/1.1\r\nHost: HOST\r\n\r\n", 405);
        row("the whole address", get("http://HOST" + answer), 400);
        row("another protocol", "GET " + answer + " HTTP/2.0\r\nHost: HOST\r\n\r\n", 400);
        row("no protocol at all", QByteArray("\x16\x03\x01\x02\r\n\r\n"), 400);
        row("a large head",
            "GET " + answer + " HTTP/1.1\r\nHost: HOST\r\nX: " + QByteArray(LoopbackListener::maxHeadSize, 'x'), 431);
    }
    void strangers() {
        QFETCH(QByteArray, request);
        QFETCH(int, status);
        const QByteArray secret = state(signIn_->pageAddress()).toUtf8();
        request.replace("HOST", "127.0.0.1:PORT").replace("PORT", QByteArray::number(port()));
        Visitor visitor(port());
        visitor.send(request.replace("STATE", secret));
        const QByteArray reply = visitor.reply();
        QVERIFY2(reply.startsWith(QByteArray("HTTP/1.1 " + QByteArray::number(status) + ' ')), reply.constData());
        QVERIFY(reply.contains("Cache-Control: no-store") && !reply.contains(secret));
        // It goes on as if nothing had been: the real answer counts.
        QCOMPARE(browser_.get(answerWith("error=access_denied")).status, 200);
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_.size(), 1, patiently);
    }

    void refusalByTheUser() {
        const PlayedPage end = browser_.get(answerWith("error=access_denied"));
        QVERIFY(end.body.contains("Quenby was not given access."));
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_.size(), 1, patiently);
        const MaybeError& error = outcomes_.first();
        QVERIFY(error && error->is(errorDomain::oauth2, qint64(oauth2::ErrorCode::authorizationFailed)));
        QCOMPARE(error->detail(errorKey::error), QVariant(u"access_denied"_s));
        QVERIFY(error->description().contains(u"declined in the browser"_s));
    }

    void onlyTheFirstAnswerCounts() {
        const quint16 answerPort = port();
        const QByteArray again = "GET /?code=again&state=" + state(signIn_->pageAddress()).toUtf8() +
                                 " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(answerPort) + "\r\n\r\n";
        QSignalSpy answered(signIn_.get(), &BrowserSignIn::answered);
        Visitor early(answerPort);
        early.send(again.first(20));
        Visitor first(answerPort);
        first.send(again);
        Visitor second(answerPort); // of the same turn of the event loop, perhaps
        second.send(again);
        QVERIFY(first.reply().startsWith("HTTP/1.1 200"));
        early.send(again.sliced(20));
        QVERIFY(early.reply().isEmpty() && second.reply().isEmpty());
        QVERIFY(Visitor(answerPort).isRefused());
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_.size(), 1, patiently);
        QCOMPARE(answered.size(), 1);
    }

    void whoHoldsConnectionsKeepsNobodyOut() {
        std::vector<std::unique_ptr<Visitor>> crowd;
        for (size_t i = 0; i < 4 * LoopbackListener::maxConnections; ++i) {
            crowd.push_back(std::make_unique<Visitor>(port()));
            crowd.back()->send("GET / HT");
        }
        const auto staying = [&] {
            return size_t(std::count_if(crowd.begin(), crowd.end(), [](const auto& one) { return !one->hasEnded(); }));
        };
        QTRY_COMPARE_WITH_TIMEOUT(staying(), LoopbackListener::maxConnections, patiently);
        QVERIFY(!crowd.back()->hasEnded());
        QCOMPARE(browser_.get(QUrl(u"http://127.0.0.1:%1/favicon.ico"_s.arg(port()))).status, 404);
        // Silence is not waited for without end.
        time_->advance(LoopbackListener::connectionTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(staying(), size_t(0), patiently);
        QVERIFY(crowd.back()->reply().startsWith("HTTP/1.1 408"));
        QVERIFY(outcomes_.isEmpty());
        QCOMPARE(browser_.get(answerWith("error=access_denied")).status, 200);
    }

    void theUserTakesTooLong() {
        time_->advance(BrowserSignIn::patience - std::chrono::seconds(1));
        QVERIFY(signIn_->openPageAgain());
        QCOMPARE(opener_->opened(), (QList<QUrl>{signIn_->pageAddress(), signIn_->pageAddress()}));
        const QUrl late = answerWith("code=c");
        time_->advance(std::chrono::seconds(1));
        QVERIFY(listeningPorts().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_.size(), 1, patiently);
        QVERIFY(outcomes_.first()->is(URLErrorCode::timedOut));
        QCOMPARE(browser_.get(late).status, 0);
    }

    void noBrowser() {
        signIn_.reset();
        opener_->setHasProgram(false);
        start();
        QVERIFY(outcomes_.isEmpty()); // never from inside
        QVERIFY(listeningPorts().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(outcomes_.size(), 1, patiently);
        QCOMPARE(outcomes_.first()->domain(), errorDomain::posix);
        QVERIFY(outcomes_.first()->description().contains(u"default browser"_s));
    }

    void cancelled_data() {
        QTest::addColumn<bool>("isAnswered"); // while the code is exchanged
        QTest::addColumn<bool>("isDestroyed");
        QTest::newRow("waiting") << false << false;
        QTest::newRow("waiting, and destroyed") << false << true;
        QTest::newRow("answered") << true << false;
        QTest::newRow("answered, and destroyed from inside") << true << true;
    }
    void cancelled() {
        QFETCH(bool, isAnswered);
        QFETCH(bool, isDestroyed);
        bool isOver = false;
        const auto end = [&] {
            if (isDestroyed)
                signIn_.reset();
            else
                signIn_->cancel();
            isOver = true;
        };
        if (isAnswered) {
            connect(signIn_.get(), &BrowserSignIn::answered, this, end);
            browser_.get(allowed(signIn_->pageAddress()));
        } else {
            end();
        }
        QTRY_VERIFY_WITH_TIMEOUT(isOver, patiently);
        QVERIFY(listeningPorts().isEmpty());
        // Long enough for an exchange that was not cancelled: this one takes as long.
        PlayedBrowser().get(drive_->endpoints().authorizationURL);
        QVERIFY(outcomes_.isEmpty() && !authentication_->canAuthorize());
    }

private:
    SignInEnvironment environment() const { return {drive_->endpoints(), time_, nullptr}; }
    void start() {
        authentication_ = drive_->makeAuthentication();
        signIn_ = std::make_unique<BrowserSignIn>(authentication_, drive_->endpoints().authorizationURL, *opener_,
                                                  environment());
        signIn_->signIn(this, [this](const auto&, const MaybeError& error) { outcomes_.append(error); });
    }
    static QString state(const QUrl& page) { return QUrlQuery(page).queryItemValue(u"state"_s, QUrl::FullyDecoded); }
    quint16 port() const {
        return quint16(
            QUrl(QUrlQuery(signIn_->pageAddress()).queryItemValue(u"redirect_uri"_s, QUrl::FullyDecoded)).port());
    }
    QUrl answerWith(const QByteArray& parameter) const { return answerTo(signIn_->pageAddress(), parameter); }
    QUrl allowed(const QUrl& page) { return allowedAnswer(browser_, page, email_); }

    const QString email_ = u"ann@example.com"_s;
    LocalDriveProcess local_;
    const std::shared_ptr<ManualTimeSource> time_ = std::make_shared<ManualTimeSource>();
    std::unique_ptr<DriveConnection> drive_;
    std::optional<FakeOpener> opener_;
    PlayedBrowser browser_;
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::unique_ptr<BrowserSignIn> signIn_;
    QList<MaybeError> outcomes_;
};

QTEST_GUILESS_MAIN(BrowserSignInTest)
#include "tst_browsersignin.moc"
